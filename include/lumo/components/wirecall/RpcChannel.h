#ifndef LUMO_COMPONENTS_WIRECALL_RPCCHANNEL_H
#define LUMO_COMPONENTS_WIRECALL_RPCCHANNEL_H

#include "lumo/components/platform/Export.h"

#include <boost/shared_ptr.hpp>
#include <google/protobuf/service.h>

#include <string>

namespace wirecall {

/// A connection to one address, over which the generated stubs call. Safe from any thread.
///
/// `CallMethod` with a null closure returns when the call has ended. The answer replaces the content of the
/// response. With a closure it returns at once. Stub and request may then be destroyed, while controller,
/// response and closure must live until the closure runs: once, on a thread of the runtime. The controller
/// must be a wirecall::RpcController.
class LUMO_EXPORT RpcChannel : public google::protobuf::RpcChannel
{
public:
    RpcChannel();
    ~RpcChannel() override;

    RpcChannel(const RpcChannel&) = delete;
    RpcChannel& operator=(const RpcChannel&) = delete;
};

/// The address of a channel, and how to connect to it.
struct ChannelOptions
{
    std::string address;         ///< "host:port"; IPv6 addresses in brackets
    std::string token;           ///< sent with every call unless empty: visible ASCII, at most 7168 bytes
    bool tls = false;            ///< encrypt, and verify the other side's certificate
    std::string rootCertificate; ///< PEM file of the authority to trust; empty: those of the system
};

/// Makes a channel. Nothing is sent before the first call; a call over a channel that can't connect
/// fails. Returns an empty pointer, with the reason in `error`, for a malformed address, a token that can't
/// be sent, a root certificate that can't be read, or a token that would travel in plain text to another
/// host.
LUMO_EXPORT boost::shared_ptr<RpcChannel> openChannel(const ChannelOptions& options, std::string& error);

} // namespace wirecall

#endif
