#include "components/wirecall/ServerListener.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <system_error>
#include <utility>

namespace wirecall {

namespace {

constexpr int kPause = 100; ///< milliseconds, when there is no descriptor or memory for a connection
constexpr std::size_t kMostRefused = 16;
constexpr int kDescriptorsOfConnection = 2;

int connectionsByDescriptors()
{
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return 100;
    const rlim_t count = std::min<rlim_t>(limit.rlim_cur, 1000000) / 2 / kDescriptorsOfConnection;
    return std::max(1, static_cast<int>(count));
}

/// Returns a client's address without its port.
std::string hostOf(const sockaddr_storage& address)
{
    if (address.ss_family == AF_INET6) {
        const in6_addr& host = reinterpret_cast<const sockaddr_in6&>(address).sin6_addr;
        // A machine usually has all addresses of its network of 64 bits.
        const std::size_t length = IN6_IS_ADDR_V4MAPPED(&host) ? sizeof host : sizeof host / 2;
        return {reinterpret_cast<const char*>(&host), length};
    }
    const in_addr& host = reinterpret_cast<const sockaddr_in&>(address).sin_addr;
    return {reinterpret_cast<const char*>(&host), sizeof host};
}

void set(int socket, int level, int option, int value)
{
    ::setsockopt(socket, level, option, &value, sizeof value);
}

} // namespace

ServerListener::~ServerListener()
{
    const std::uint64_t one = 1;
    if (m_Thread.joinable() && ::write(m_Stop, &one, sizeof one) > 0)
        m_Thread.join();
    for (const std::vector<int>& sockets : {m_Listening, std::vector<int>(m_Refused.begin(), m_Refused.end()),
                                            std::vector<int>{m_Events, m_Stop}})
        for (const int socket : sockets)
            ::close(socket);
    for (const auto& [socket, client] : m_Watched)
        ::close(socket);
}

bool ServerListener::bind(const std::string& host, int port)
{
    addrinfo hints = {};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found) != 0)
        return false;
    m_Port = port;
    bool bound = true;
    for (const addrinfo* each = found; each != nullptr && bound; each = each->ai_next)
        bound = bindOne(*each);
    ::freeaddrinfo(found);
    return bound && !m_Listening.empty();
}

bool ServerListener::bindOne(const addrinfo& address)
{
    const int socket = ::socket(address.ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (socket < 0)
        return errno == EAFNOSUPPORT; // a host may have addresses that this machine can't use
    m_Listening.push_back(socket);
    set(socket, SOL_SOCKET, SO_REUSEADDR, 1);
    if (address.ai_family == AF_INET6)
        set(socket, IPPROTO_IPV6, IPV6_V6ONLY, 0);
    sockaddr_storage place = {};
    std::memcpy(&place, address.ai_addr, address.ai_addrlen);
    // IPv4 and IPv6 have the port at the same place; the first address takes it for all.
    reinterpret_cast<sockaddr_in&>(place).sin_port = htons(static_cast<std::uint16_t>(m_Port));
    socklen_t length = address.ai_addrlen;
    if (::bind(socket, reinterpret_cast<const sockaddr*>(&place), length) != 0 ||
        ::listen(socket, SOMAXCONN) != 0 ||
        ::getsockname(socket, reinterpret_cast<sockaddr*>(&place), &length) != 0)
        return false;
    m_Port = ntohs(reinterpret_cast<const sockaddr_in&>(place).sin_port);
    return true;
}

bool ServerListener::start(const Limits& limits, Connected connected, std::string& error)
{
    m_Limits = limits;
    const int most = connectionsByDescriptors();
    m_Limits.connections = limits.connections > 0 ? std::min(limits.connections, most) : most;
    m_Connected = std::move(connected);
    m_Events = ::epoll_create1(EPOLL_CLOEXEC);
    m_Stop = ::eventfd(0, EFD_CLOEXEC);
    std::vector<int> sockets = m_Listening;
    sockets.push_back(m_Stop);
    for (const int socket : sockets) {
        epoll_event event = {};
        event.events = EPOLLIN;
        event.data.fd = socket;
        if (::epoll_ctl(m_Events, EPOLL_CTL_ADD, socket, &event) != 0) {
            error = std::string("can't wait for connections: ") + std::strerror(errno);
            return false;
        }
    }
    try {
        m_Thread = std::thread([this] { run(); });
    } catch (const std::system_error& failure) {
        error = std::string("can't wait for connections: ") + failure.what();
    }
    return m_Thread.joinable();
}

void ServerListener::run()
{
    std::array<epoll_event, 64> events{};
    for (;;) {
        const int count = ::epoll_wait(m_Events, events.data(), events.size(), -1);
        m_Pauses = false;
        for (int i = 0; i < count; ++i) {
            const int socket = events.at(static_cast<std::size_t>(i)).data.fd;
            if (socket == m_Stop)
                return;
            if (std::find(m_Listening.begin(), m_Listening.end(), socket) != m_Listening.end())
                accept(socket);
            else
                ended(socket);
        }
        if (m_Pauses)
            ::usleep(kPause * 1000);
    }
}

void ServerListener::accept(int listening)
{
    sockaddr_storage address = {};
    socklen_t length = sizeof address;
    const int socket =
        ::accept4(listening, reinterpret_cast<sockaddr*>(&address), &length, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (socket >= 0)
        take(socket, hostOf(address));
    else if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM)
        m_Pauses = true; // the connection waits
}

void ServerListener::take(int socket, const std::string& client)
{
    if (m_Connections >= m_Limits.connections)
        return refuse(socket, "the server has as many connections as it may");
    if (const auto found = m_OfClient.find(client); m_Limits.ofClientAddress > 0 &&
                                                    found != m_OfClient.end() &&
                                                    found->second >= m_Limits.ofClientAddress)
        return refuse(socket, "the server has as many connections of this address as it may");
    const int watched = ::fcntl(socket, F_DUPFD_CLOEXEC, 0);
    epoll_event event = {};
    event.data.fd = watched; // reported without being asked for: that it was shut down
    if (watched < 0 || ::epoll_ctl(m_Events, EPOLL_CTL_ADD, watched, &event) != 0) {
        ::close(watched);
        return refuse(socket, "the server has no descriptor left");
    }
    set(socket, IPPROTO_TCP, TCP_NODELAY, 1);
    m_Watched.emplace(watched, client);
    ++m_OfClient[client];
    ++m_Connections;
    m_Connected(socket);
}

void ServerListener::refuse(int socket, const char* reason)
{
    ++m_Refusals;
    if (m_Limits.refusal == nullptr) {
        ::close(socket);
        return;
    }
    const std::string bytes = m_Limits.refusal(reason);
    ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    ::shutdown(socket, SHUT_WR);
    // Closed at once, with bytes of the client unread, it would be reset, and the reason be lost.
    m_Refused.push_back(socket);
    if (m_Refused.size() > kMostRefused) {
        ::close(m_Refused.front());
        m_Refused.pop_front();
    }
}

void ServerListener::ended(int watched)
{
    const auto found = m_Watched.find(watched);
    if (found == m_Watched.end())
        return;
    if (const auto client = m_OfClient.find(found->second); --client->second == 0)
        m_OfClient.erase(client);
    m_Watched.erase(found);
    ::close(watched);
    --m_Connections;
}

} // namespace wirecall
