#ifndef LUMO_COMPONENTS_WIRECALL_RPCSERVER_H
#define LUMO_COMPONENTS_WIRECALL_RPCSERVER_H

#include "lumo/components/platform/Export.h"

#include <google/protobuf/service.h>

#include <functional>
#include <memory>
#include <string>

namespace wirecall {

/// What a service method gets as its controller: the call as the server sees it.
///
/// A method answers by running its closure, once, on any thread. `SetFailed` before that makes the
/// caller's controller fail with the text instead of delivering the response.
class LUMO_EXPORT ServerCall : public google::protobuf::RpcController
{
public:
    /// Fully qualified method name, "package.Service.method".
    virtual const std::string& method() const = 0;
    /// The token that came with the call; empty if none did.
    virtual std::string token() const = 0;
    /// The caller's address.
    virtual std::string peer() const = 0;
    /// True once the caller has gone or given up; nobody will read the answer.
    bool IsCanceled() const override = 0;
};

/// Serves any generated protobuf services on one address, to any client that speaks gRPC.
class LUMO_EXPORT RpcServer
{
public:
    /// Judges a call before its request is read. False refuses it as unauthenticated, with the reason.
    using Authenticate = std::function<bool(const ServerCall& call, std::string& reason)>;

    struct Options
    {
        std::string address;        ///< "host:port"; port 0 takes a free one
        std::string tlsCertificate; ///< PEM file; empty with the key: plain text
        std::string tlsKey;         ///< PEM file
        int threads = 0;            ///< methods that run at once; 0: four per processor
        Authenticate authenticate;  ///< empty: every call passes
    };

    RpcServer();
    ~RpcServer(); ///< stops

    RpcServer(const RpcServer&) = delete;
    RpcServer& operator=(const RpcServer&) = delete;

    /// Adds a service before `start`. The server does not own it; it must outlive `stop`.
    void add(google::protobuf::Service* service);
    /// Starts listening; again after `stop`, too. False with the reason in `error` when it can't.
    bool start(const Options& options, std::string& error);
    /// The port listened on; 0 before `start`.
    int port() const;
    /// Takes no new calls, gives running ones `graceMilliseconds` to end, cancels the rest and
    /// returns when all methods have answered. Closures that methods still hold must be run. Not to be
    /// called by a method. What a method throws refuses its call.
    void stop(int graceMilliseconds = 2000);

private:
    struct Impl;
    std::unique_ptr<Impl> m_Impl;
};

} // namespace wirecall

#endif
