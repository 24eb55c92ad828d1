#ifndef LUMO_TESTS_SUPPORT_CUTTINGPROXY_H
#define LUMO_TESTS_SUPPORT_CUTTINGPROXY_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <thread>
#include <vector>

/// A cable to a loopback port that counts what moves over it, both ways, and is cut after so many bytes. With
/// a pause, which comes after every 16 KiB, it is slow and holds hardly anything.
class CuttingProxy
{
public:
    explicit CuttingProxy(int targetPort, std::uint64_t cutAfter = std::numeric_limits<std::uint64_t>::max(),
                          std::chrono::milliseconds pause = std::chrono::milliseconds(0))
        : m_TargetPort(targetPort),
          m_CutAfter(cutAfter),
          m_Pause(pause),
          m_Listener(::socket(AF_INET, SOCK_STREAM, 0))
    {
        holdLittle(m_Listener);
        sockaddr_in address = loopback(0);
        socklen_t length = sizeof address;
        if (::bind(m_Listener, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
            ::listen(m_Listener, 16) != 0)
            throw std::runtime_error("the proxy can't listen");
        ::getsockname(m_Listener, reinterpret_cast<sockaddr*>(&address), &length);
        m_Port = ntohs(address.sin_port);
        m_Thread = std::thread([this] { acceptAll(); });
    }

    ~CuttingProxy()
    {
        m_Ending = true;
        ::shutdown(m_Listener, SHUT_RDWR);
        m_Thread.join();
        ::close(m_Listener);
    }

    CuttingProxy(const CuttingProxy&) = delete;
    CuttingProxy& operator=(const CuttingProxy&) = delete;

    int port() const { return m_Port; }
    std::uint64_t moved() const { return m_Moved; }

private:
    static sockaddr_in loopback(int port)
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return address;
    }

    void holdLittle(int socket) const
    {
        const int bytes = 16384;
        if (m_Pause.count() > 0) {
            ::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
            ::setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &bytes, sizeof bytes);
        }
    }

    bool over() const { return m_Ending || m_Moved >= m_CutAfter; }

    void acceptAll()
    {
        std::vector<std::thread> connections;
        for (;;) {
            const int near = ::accept(m_Listener, nullptr, nullptr);
            if (near < 0)
                break;
            connections.emplace_back([this, near] { connect(near); });
        }
        for (std::thread& connection : connections)
            connection.join();
    }

    void connect(int near)
    {
        const int far = ::socket(AF_INET, SOCK_STREAM, 0);
        holdLittle(far);
        const sockaddr_in address = loopback(m_TargetPort);
        if (!over() && ::connect(far, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
            forward(near, far);
        ::close(near);
        ::close(far);
    }

    void forward(int near, int far)
    {
        std::vector<char> buffer(m_Pause.count() > 0 ? 16384 : 65536);
        pollfd ends[] = {{near, POLLIN, 0}, {far, POLLIN, 0}};
        while (!over()) {
            if (::poll(ends, 2, 20) <= 0)
                continue;
            for (int i = 0; i < 2; ++i) {
                if (ends[i].revents == 0)
                    continue;
                const ssize_t count = ::recv(ends[i].fd, buffer.data(), buffer.size(), 0);
                if (count <= 0)
                    return;
                for (ssize_t sent = 0; sent < count;) {
                    const ssize_t each = ::send(ends[1 - i].fd, &buffer[sent], count - sent, MSG_NOSIGNAL);
                    if (each < 0)
                        return;
                    sent += each;
                }
                m_Moved += static_cast<std::uint64_t>(count);
                std::this_thread::sleep_for(m_Pause);
            }
        }
    }

    const int m_TargetPort;
    const std::uint64_t m_CutAfter;
    const std::chrono::milliseconds m_Pause;
    const int m_Listener;
    int m_Port = 0;
    std::atomic<bool> m_Ending{false};
    std::atomic<std::uint64_t> m_Moved{0};
    std::thread m_Thread;
};

#endif
