#ifndef LUMO_WIRECALL_CLIENTCALL_H
#define LUMO_WIRECALL_CLIENTCALL_H

#include "components/wirecall/GrpcChannel.h"

#include <grpcpp/client_context.h>
#include <grpcpp/completion_queue.h>
#include <grpcpp/impl/rpc_method.h>
#include <grpcpp/support/status.h>

#include <memory>
#include <string>

namespace wirecall {

/// Fails a call before it begins when its request is larger than a message may be, for which gRPC might end
/// the process. Returns whether it did.
bool refuseTooLarge(const google::protobuf::Message& request, RpcController& controller);

/// What every call to a server has: its path, its settings and its outcome. Lives until the call has ended.
class ClientCall
{
public:
    ClientCall(std::shared_ptr<const Connection> connection, const google::protobuf::MethodDescriptor& method,
               grpc::internal::RpcMethod::RpcType type, const RpcController& settings);

    grpc::Channel& channel() const { return *m_Connection->channel; }
    const grpc::internal::RpcMethod& method() const { return m_Method; }
    grpc::ClientContext& context() { return m_Context; }

    /// Sets the outcome.
    void conclude(RpcController& controller, const grpc::Status& status) const;

private:
    bool isConnected() const;

    const std::shared_ptr<const Connection> m_Connection;
    const std::string m_Path;
    const grpc::internal::RpcMethod m_Method;
    const bool m_WasConnected;
    grpc::ClientContext m_Context;
};

/// A call whose caller waits for its events. After a stall the call is cancelled; a call that is destroyed
/// while it runs, too.
class WaitingCall
{
public:
    WaitingCall(std::shared_ptr<const Connection> connection,
                const google::protobuf::MethodDescriptor& method, grpc::internal::RpcMethod::RpcType type,
                RpcController& controller);

    grpc::Channel& channel() const { return m_Call.channel(); }
    const grpc::internal::RpcMethod& method() const { return m_Call.method(); }
    grpc::ClientContext& context() { return m_Call.context(); }
    grpc::CompletionQueue& queue() { return m_Queue; }

    /// Waits for the next event of the call. Returns its tag, and in `ok` whether it succeeded.
    void* wait(bool& ok);
    /// Ends the call early; safe from any thread.
    void cancel() { m_Call.context().TryCancel(); }
    /// Sets the outcome.
    void conclude(const grpc::Status& status);
    /// Cancels what still runs and waits for all events that have not come yet. None can be awaited any more.
    void end();

private:
    RpcController& m_Controller;
    ClientCall m_Call;
    grpc::CompletionQueue m_Queue;
    bool m_Stalled = false;
};

} // namespace wirecall

#endif
