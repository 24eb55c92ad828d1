#include "components/wirecall/Address.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <cctype>

namespace wirecall {

namespace {

bool parsePort(const std::string& text, int& port)
{
    if (text.empty() || text.size() > 5 ||
        !std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; }))
        return false;
    port = std::stoi(text);
    return port <= 65535;
}

bool isHostName(const std::string& text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) {
        return std::isalnum(c) != 0 || c == '.' || c == '-' || c == '_';
    });
}

} // namespace

bool parseAddress(const std::string& text, Address& address)
{
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos || !parsePort(text.substr(colon + 1), address.port))
        return false;
    std::string host = text.substr(0, colon);
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
        in6_addr parsed;
        if (inet_pton(AF_INET6, host.c_str(), &parsed) != 1)
            return false;
    } else if (!isHostName(host)) {
        return false;
    }
    address.host = host;
    return true;
}

bool isLoopbackHost(const std::string& host)
{
    in_addr ipv4;
    if (inet_pton(AF_INET, host.c_str(), &ipv4) == 1)
        return (ntohl(ipv4.s_addr) >> 24) == 127;
    in6_addr ipv6;
    if (inet_pton(AF_INET6, host.c_str(), &ipv6) == 1)
        return IN6_IS_ADDR_LOOPBACK(&ipv6);
    return host == "localhost";
}

} // namespace wirecall
