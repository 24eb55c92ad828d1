#include "components/wirecall/Address.h"

#include <gtest/gtest.h>

using wirecall::Address;
using wirecall::isLoopbackHost;
using wirecall::parseAddress;

TEST(Address, OnlyHostAndPortAreTakenApart)
{
    const struct
    {
        const char* text;
        bool valid;
        const char* host;
        int port;
    } cases[] = {
        {"127.0.0.1:7001", true, "127.0.0.1", 7001},
        {"centre.example:65535", true, "centre.example", 65535},
        {"[::1]:0", true, "::1", 0},
        {"centre", false, "", 0},
        {"centre:", false, "", 0},
        {":7001", false, "", 0},
        {"centre:65536", false, "", 0},
        {"centre:70x", false, "", 0},
        {"centre:-1", false, "", 0},
        {"[centre]:1", false, "", 0},
        {"::1:7001", false, "", 0},
        {"dns:///centre:1", false, "", 0},
        {"unix:/tmp/x:1", false, "", 0},
        {"centre path:1", false, "", 0},
    };
    for (const auto& c : cases) {
        Address address;
        EXPECT_EQ(parseAddress(c.text, address), c.valid) << c.text;
        if (c.valid) {
            EXPECT_EQ(address.host, c.host);
            EXPECT_EQ(address.port, c.port);
        }
    }
}

TEST(Address, OnlyThisMachineIsLoopback)
{
    for (const char* host : {"localhost", "127.0.0.1", "127.255.0.3", "::1"})
        EXPECT_TRUE(isLoopbackHost(host)) << host;
    for (const char* host :
         {"localhost.example", "127.0.0.1.example", "128.0.0.1", "0.0.0.0", "::", "::2", "127"})
        EXPECT_FALSE(isLoopbackHost(host)) << host;
}
