#ifndef LUMO_WIRECALL_SERVERCALLS_H
#define LUMO_WIRECALL_SERVERCALLS_H

#include "components/wirecall/CallCount.h"
#include "components/wirecall/ServerMethod.h"
#include "components/wirecall/StreamWatch.h"
#include "components/wirecall/UserShares.h"
#include "lumo/components/wirecall/RpcServer.h"

#include <google/protobuf/service.h>
#include <grpcpp/generic/async_generic_service.h>
#include <grpcpp/server.h>

#include <atomic>
#include <cstddef>
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
    int running() const { return m_Running.get(); }
    /// Returns when no call is left.
    void waitForEnd() { m_Running.waitForNone(); }

private:
    class Call;

    RpcServer::Authenticate m_Authenticate;
    RpcServer::Observe m_Observe;
    const RpcServer::Judge m_Judge;  ///< may be null
    const std::size_t m_CallsOfUser; ///< the most; 0: any number
    const StreamWatch::Limit m_StreamLimit;
    UserShares m_UserCalls;
    UserShares m_Memory;
    std::unordered_map<std::string, ServerMethod> m_Methods; ///< by path, "/package.Service/Method"
    std::atomic<int> m_Arriving{0};                          ///< calls whose request has not been taken yet
    CallCount m_Running;
};

} // namespace wirecall

#endif
