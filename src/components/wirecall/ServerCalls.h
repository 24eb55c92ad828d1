#ifndef LUMO_WIRECALL_SERVERCALLS_H
#define LUMO_WIRECALL_SERVERCALLS_H

#include "components/wirecall/UserShares.h"
#include "lumo/components/wirecall/RpcServer.h"

#include <google/protobuf/message.h>
#include <grpcpp/generic/async_generic_service.h>
#include <grpcpp/server.h>
#include <grpcpp/support/byte_buffer.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_map>

namespace wirecall {

/// The calls of one server: answers them and counts those that run.
class ServerCalls
{
public:
    explicit ServerCalls(const RpcServer::Options& options);

    void add(google::protobuf::Service* service);
    /// Takes the next call from `queue`; each call, when it starts, takes the next one after it.
    void takeNext(grpc::AsyncGenericService& generic, grpc::ServerCompletionQueue& queue);
    /// The number of calls that have arrived and not ended.
    int running() const;
    /// Returns when no call is left.
    void waitForEnd();

private:
    class Call;

    struct Method
    {
        google::protobuf::Service* service = nullptr;
        const google::protobuf::MethodDescriptor* descriptor = nullptr;
        std::atomic<std::int64_t> usualTime{0}; ///< in nanoseconds; of the latest runs most
    };
    class Timed;

    void began();
    void ended();

    RpcServer::Authenticate m_Authenticate;
    RpcServer::Observe m_Observe;
    const RpcServer::Judge m_Judge;  ///< may be null
    const std::size_t m_CallsOfUser; ///< the most; 0: any number
    UserShares m_UserCalls;
    UserShares m_Memory;
    std::unordered_map<std::string, Method> m_Methods; ///< by path, "/package.Service/Method"
    std::atomic<int> m_Arriving{0};                    ///< calls whose request has not been taken yet
    mutable std::mutex m_Mutex;
    std::condition_variable m_NoneLeft;
    int m_Calls = 0;
};

} // namespace wirecall

#endif
