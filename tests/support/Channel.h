#ifndef LUMO_TESTS_SUPPORT_CHANNEL_H
#define LUMO_TESTS_SUPPORT_CHANNEL_H

#include "lumo/components/wirecall/RpcChannel.h"

#include <gtest/gtest.h>

#include <string>

/// A channel to a server on loopback, by TLS when a root certificate is given.
inline boost::shared_ptr<wirecall::RpcChannel>
channelTo(const std::string& address, const std::string& token = {}, const std::string& rootCertificate = {})
{
    wirecall::ChannelOptions options;
    options.address = address;
    options.token = token;
    options.tls = !rootCertificate.empty();
    options.rootCertificate = rootCertificate;
    std::string error;
    auto channel = wirecall::openChannel(options, error);
    EXPECT_TRUE(channel) << error;
    return channel;
}

#endif
