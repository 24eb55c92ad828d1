#include "components/wirecall/Traffic.h"

#include "components/wirecall/Address.h"

#include <arpa/inet.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

namespace wirecall {

namespace {

/// What keeps a connection alive is no progress: a ping has 17 bytes.
constexpr std::uint64_t kMoreThanPings = 4096;
constexpr int kLooksPerLimit = 4;

/// An address with its port; IPv4 in the form that IPv6 has for it.
using Endpoint = std::pair<std::array<std::uint8_t, 16>, int>;

Endpoint ipv4Endpoint(const in_addr& host, int port)
{
    Endpoint endpoint{{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF}, port};
    std::memcpy(endpoint.first.data() + 12, &host, 4);
    return endpoint;
}

Endpoint ipv6Endpoint(const in6_addr& host, int port)
{
    Endpoint endpoint{{}, port};
    std::memcpy(endpoint.first.data(), &host, 16);
    return endpoint;
}

std::string withBrackets(std::string peer)
{
    const std::pair<const char*, char> encoded[] = {{"%5B", '['}, {"%5D", ']'}};
    for (const auto& [code, bracket] : encoded)
        if (const std::size_t found = peer.find(code); found != std::string::npos)
            peer.replace(found, 3, 1, bracket);
    return peer;
}

std::optional<Endpoint> endpointOf(const std::string& peer)
{
    Address address;
    const std::size_t colon = peer.find(':');
    if (colon == std::string::npos || !parseAddress(withBrackets(peer.substr(colon + 1)), address))
        return std::nullopt;
    in_addr ipv4;
    if (inet_pton(AF_INET, address.host.c_str(), &ipv4) == 1)
        return ipv4Endpoint(ipv4, address.port);
    in6_addr ipv6;
    if (inet_pton(AF_INET6, address.host.c_str(), &ipv6) == 1)
        return ipv6Endpoint(ipv6, address.port);
    return std::nullopt;
}

std::optional<Endpoint> peerOf(int socket)
{
    sockaddr_storage storage;
    socklen_t length = sizeof storage;
    if (::getpeername(socket, reinterpret_cast<sockaddr*>(&storage), &length) != 0)
        return std::nullopt;
    if (storage.ss_family == AF_INET) {
        sockaddr_in ipv4;
        std::memcpy(&ipv4, &storage, sizeof ipv4);
        return ipv4Endpoint(ipv4.sin_addr, ntohs(ipv4.sin_port));
    }
    if (storage.ss_family == AF_INET6) {
        sockaddr_in6 ipv6;
        std::memcpy(&ipv6, &storage, sizeof ipv6);
        return ipv6Endpoint(ipv6.sin6_addr, ntohs(ipv6.sin6_port));
    }
    return std::nullopt;
}

} // namespace

std::uint64_t bytesMoved(const std::string& peer)
{
    const std::optional<Endpoint> endpoint = endpointOf(peer);
    if (!endpoint)
        return 0;
    std::uint64_t bytes = 0;
    std::error_code error;
    for (std::filesystem::directory_iterator each("/proc/self/fd", error), end; !error && each != end;
         each.increment(error)) {
        const int socket = static_cast<int>(std::strtol(each->path().filename().c_str(), nullptr, 10));
        tcp_info info{};
        socklen_t length = sizeof info;
        if (peerOf(socket) == endpoint && ::getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &length) == 0)
            bytes += info.tcpi_bytes_received + info.tcpi_bytes_acked;
    }
    return bytes;
}

StallWatch::StallWatch(std::chrono::milliseconds limit) : m_Limit(limit), m_LastProgress(Clock::now())
{
}

std::chrono::system_clock::time_point StallWatch::nextLook() const
{
    return std::chrono::system_clock::now() +
           std::max(m_Limit / kLooksPerLimit, std::chrono::milliseconds(1));
}

bool StallWatch::isStalled(const std::string& peer)
{
    const std::uint64_t bytes = bytesMoved(peer);
    const Clock::time_point now = Clock::now();
    // Fewer bytes than before are those of another connection.
    if (!m_Bytes || bytes < *m_Bytes || bytes > *m_Bytes + kMoreThanPings) {
        m_Bytes = bytes;
        m_LastProgress = now;
    }
    return now - m_LastProgress >= m_Limit;
}

} // namespace wirecall
