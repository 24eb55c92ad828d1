#include "components/wirecall/Address.h"

#include <gtest/gtest.h>

using wirecall::Address;
using wirecall::isLoopbackHost;
using wirecall::parseAddress;

TEST(Address, HasAHostAndAPortAndNothingElse)
{
    const struct
    {
        const char* text;
        const char* host;
        int port;
    } valid[] = {{"127.0.0.1:7001", "127.0.0.1", 7001},
                 {"centre.example:65535", "centre.example", 65535},
                 {"[::1]:0", "::1", 0}};
    Address address;
    for (const auto& c : valid) {
        EXPECT_TRUE(parseAddress(c.text, address)) << c.text;
        EXPECT_EQ(address.host, c.host);
        EXPECT_EQ(address.port, c.port);
    }
    for (const char* text : {"centre", "centre:", ":7001", "centre:65536", "centre:70x", "centre:-1",
                             "[centre]:1", "::1:7001", "dns:///centre:1", "unix:/tmp/x:1", "centre path:1"})
        EXPECT_FALSE(parseAddress(text, address)) << text;
}

TEST(Address, OnlyThisMachineIsLoopback)
{
    for (const char* host : {"localhost", "127.0.0.1", "127.255.0.3", "::1"})
        EXPECT_TRUE(isLoopbackHost(host)) << host;
    for (const char* host :
         {"localhost.example", "127.0.0.1.example", "128.0.0.1", "0.0.0.0", "::", "::2", "127"})
        EXPECT_FALSE(isLoopbackHost(host)) << host;
}
