#ifndef LUMO_BENCH_LOOPBACK_H
#define LUMO_BENCH_LOOPBACK_H

#include <netinet/in.h>

#include <cstdint>

/// The address of a port of this machine.
inline sockaddr_in loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

#endif
