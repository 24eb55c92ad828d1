#ifndef LUMO_WIRECALL_GRPCCHANNEL_H
#define LUMO_WIRECALL_GRPCCHANNEL_H

#include "lumo/components/wirecall/RpcChannel.h"
#include "lumo/components/wirecall/RpcController.h"

#include <grpcpp/channel.h>

#include <memory>
#include <string>

namespace wirecall {

/// What all calls of a channel share.
struct Connection
{
    std::shared_ptr<grpc::Channel> channel;
    std::string target;        ///< the name that gRPC knows the address by
    std::string authorization; ///< header; empty: none
};

/// The channels that openChannel makes.
class GrpcChannel final : public RpcChannel
{
public:
    explicit GrpcChannel(std::shared_ptr<const Connection> connection) : m_Connection(std::move(connection))
    {
    }

    const std::shared_ptr<const Connection>& connection() const { return m_Connection; }

    void CallMethod(const google::protobuf::MethodDescriptor* method,
                    google::protobuf::RpcController* controller, const google::protobuf::Message* request,
                    google::protobuf::Message* response, google::protobuf::Closure* done) override;

private:
    void callAndWait(const google::protobuf::MethodDescriptor& method, RpcController& controller,
                     const google::protobuf::Message& request, google::protobuf::Message& response) const;
    void callAndReturn(const google::protobuf::MethodDescriptor& method, RpcController& controller,
                       const google::protobuf::Message& request, google::protobuf::Message& response,
                       google::protobuf::Closure& done) const;

    const std::shared_ptr<const Connection> m_Connection;
};

} // namespace wirecall

#endif
