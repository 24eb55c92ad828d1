#ifndef LUMO_WIRECALL_SERVERCALLS_H
#define LUMO_WIRECALL_SERVERCALLS_H

#include "lumo/components/wirecall/RpcServer.h"

#include <google/protobuf/message.h>
#include <grpcpp/generic/async_generic_service.h>
#include <grpcpp/server.h>
#include <grpcpp/support/byte_buffer.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <unordered_map>

namespace wirecall {

/// An event on the completion queue that a step of a call waits for.
class Event
{
public:
    virtual ~Event() = default;
    virtual void happened(bool ok) = 0;
};

/// The calls of one server: answers them and counts those that run.
class ServerCalls
{
public:
    explicit ServerCalls(RpcServer::Authenticate authenticate);

    void add(google::protobuf::Service* service);
    /// Takes the next call from `queue`; each call, when it starts, takes the next one after it.
    void takeNext(grpc::AsyncGenericService& generic, grpc::ServerCompletionQueue& queue);
    /// Returns when no call is left.
    void waitForEnd();

private:
    class Call;

    struct Method
    {
        google::protobuf::Service* service;
        const google::protobuf::MethodDescriptor* descriptor;
    };

    void began();
    void ended();

    RpcServer::Authenticate m_Authenticate;
    std::unordered_map<std::string, Method> m_Methods; ///< by path, "/package.Service/Method"
    std::mutex m_Mutex;
    std::condition_variable m_NoneLeft;
    int m_Calls = 0;
};

} // namespace wirecall

#endif
