// A slow link for measurements: forwards TCP connections, and holds back what passes so that it arrives as
// over a link of a given rate and round trip. What it does not have of a real link: lost packets, and the
// slow start of TCP, so both sides of a comparison are a little faster than there.

#include "bench/Loopback.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <iostream>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kPiece = 16384;           // bytes
constexpr std::chrono::milliseconds kQueue(20); // of data may wait at the head of the link, as in a router

/// One direction of the link, shared by all connections.
struct Direction
{
    double bytesPerSecond = 0;
    Clock::duration delay{};
    std::mutex mutex;
    Clock::time_point idle; ///< when all that was sent so far has left

    /// When the last of `bytes` leaves that are sent now.
    Clock::time_point send(std::size_t bytes)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        idle =
            std::max(idle, Clock::now()) + std::chrono::duration_cast<Clock::duration>(
                                               std::chrono::duration<double>(double(bytes) / bytesPerSecond));
        return idle;
    }
};

class Socket
{
public:
    explicit Socket(int descriptor) : m_Descriptor(descriptor)
    {
        if (descriptor < 0)
            throw std::runtime_error(std::strerror(errno));
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    ~Socket() { ::close(m_Descriptor); }
    int get() const { return m_Descriptor; }

private:
    int m_Descriptor;
};

/// What is on its way over one direction of one connection.
class Pipe
{
public:
    void push(std::string data, Clock::time_point due)
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Pieces.push_back({std::move(data), due});
        m_Changed.notify_one();
    }

    /// The next piece, once it is due; an empty one is the end.
    std::string pop()
    {
        std::unique_lock<std::mutex> lock(m_Mutex);
        m_Changed.wait(lock, [this] { return !m_Pieces.empty(); });
        Piece piece = std::move(m_Pieces.front());
        m_Pieces.pop_front();
        lock.unlock();
        std::this_thread::sleep_until(piece.due);
        return std::move(piece.data);
    }

private:
    struct Piece
    {
        std::string data;
        Clock::time_point due;
    };

    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::deque<Piece> m_Pieces;
};

void receive(int from, Direction& direction, Pipe& pipe)
{
    std::array<char, kPiece> buffer{};
    ssize_t count = 0;
    while ((count = ::recv(from, buffer.data(), buffer.size(), 0)) > 0) {
        const Clock::time_point leaves = direction.send(static_cast<std::size_t>(count));
        pipe.push(std::string(buffer.data(), static_cast<std::size_t>(count)), leaves + direction.delay);
        std::this_thread::sleep_until(leaves - kQueue);
    }
    pipe.push({}, Clock::now() + direction.delay);
}

/// Ends when the other side has closed and all has arrived, or nobody takes it any more.
void forward(int from, int to, Direction& direction)
{
    Pipe pipe;
    std::thread receiver([&] { receive(from, direction, pipe); });
    bool good = true;
    for (std::string data = pipe.pop(); !data.empty(); data = pipe.pop()) {
        for (std::size_t sent = 0; good && sent < data.size();) {
            const ssize_t count = ::send(to, data.data() + sent, data.size() - sent, MSG_NOSIGNAL);
            good = count > 0;
            sent += good ? static_cast<std::size_t>(count) : 0;
        }
        if (!good)
            ::shutdown(from, SHUT_RD);
    }
    ::shutdown(to, SHUT_WR);
    receiver.join();
}

void noDelay(const Socket& socket)
{
    const int on = 1;
    ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

struct Link
{
    Direction there;
    Direction back;
};

void connection(int accepted, int port, Link& link)
try {
    const Socket client(accepted);
    const Socket server(::socket(AF_INET, SOCK_STREAM, 0));
    const sockaddr_in address = loopback(port);
    if (::connect(server.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return;
    noDelay(client);
    noDelay(server);
    std::thread back([&] { forward(server.get(), client.get(), link.back); });
    forward(client.get(), server.get(), link.there);
    back.join();
} catch (const std::exception& error) {
    std::cerr << "link_proxy: " << error.what() << '\n';
}

std::unique_ptr<Socket> listenOn(int port)
{
    auto listener = std::make_unique<Socket>(::socket(AF_INET, SOCK_STREAM, 0));
    const int on = 1;
    ::setsockopt(listener->get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = loopback(port);
    if (::bind(listener->get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener->get(), SOMAXCONN) != 0)
        throw std::runtime_error("can't listen on port " + std::to_string(port) + ": " +
                                 std::strerror(errno));
    return listener;
}

[[noreturn]] void serve(const Socket& listener, int to, Link& link)
{
    for (;;) {
        const int accepted = ::accept(listener.get(), nullptr, nullptr);
        if (accepted >= 0)
            std::thread(connection, accepted, to, std::ref(link)).detach();
    }
}

} // namespace

int main(int argc, char** argv)
try {
    if (argc < 5 || argc % 2 == 0) {
        std::cerr << "usage: link_proxy MBIT/S ROUND-TRIP-MS (PORT TO-PORT)...   all on 127.0.0.1\n";
        return 2;
    }
    static Link link; // connections use it until the process ends
    for (Direction* direction : {&link.there, &link.back}) {
        direction->bytesPerSecond = std::stod(argv[1]) * 1e6 / 8;
        direction->delay = std::chrono::duration_cast<Clock::duration>(
            std::chrono::duration<double, std::milli>(std::stod(argv[2]) / 2));
    }
    std::vector<std::unique_ptr<Socket>> listeners;
    for (int i = 3; i < argc; i += 2)
        listeners.push_back(listenOn(std::stoi(argv[i])));
    std::vector<std::thread> servers;
    for (std::size_t i = 0; i < listeners.size(); ++i)
        servers.emplace_back([&, i, to = std::stoi(argv[4 + 2 * i])] { serve(*listeners[i], to, link); });
    for (std::thread& server : servers)
        server.join();
    return 0;
} catch (const std::exception& error) {
    std::cerr << "link_proxy: " << error.what() << '\n';
    return 1;
}
