#ifndef LUMO_COMPONENTS_WIRECALL_RPCSERVER_H
#define LUMO_COMPONENTS_WIRECALL_RPCSERVER_H

#include "lumo/components/platform/Export.h"

#include <google/protobuf/message.h>
#include <google/protobuf/service.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace wirecall {

/// The controller that a service method gets: the call as the server sees it.
///
/// A method answers by running its closure, once, on any thread. After `SetFailed` the caller's controller
/// fails with the text instead, and gets no response. An exception of a method fails its call in the same
/// way.
class LUMO_EXPORT ServerCall : public google::protobuf::RpcController
{
public:
    /// Fully qualified method name, "package.Service.method".
    virtual const std::string& method() const = 0;
    /// The token that came with the call; empty if there was none.
    virtual const std::string& token() const = 0;
    /// The user whose call it is: what the server's Authenticate has set, or else the token. What each user
    /// may take of the server is bounded.
    virtual const std::string& user() const = 0;
    /// The group of that user, which only observers use; empty unless set.
    virtual const std::string& group() const = 0;
    /// For Authenticate only.
    virtual void setUser(std::string user, std::string group) = 0;
    /// The caller's address.
    virtual std::string peer() const = 0;
    /// True once the caller has disconnected or cancelled the call; the answer will not be read.
    bool IsCanceled() const override = 0;
    /// As `SetFailed`; the caller gets gRPC's status NOT_FOUND.
    virtual void setNotFound(const std::string& reason) = 0;
    /// The same with RESOURCE_EXHAUSTED.
    virtual void setExhausted(const std::string& reason) = 0;
    /// Sends the reason of an answer that refuses beside it, see RpcController::reason(). Call it before the
    /// closure. UTF-8; what is longer than kLongestReason is cut.
    virtual void setReason(const std::string& /*reason*/) {}
};

/// How a call of a server went.
struct CallReport
{
    std::string_view outcome = "OK"; ///< gRPC's name of the status: "UNAUTHENTICATED", "CANCELLED" and so on
    std::string reason;              ///< of a failure
    std::chrono::nanoseconds duration{}; ///< from the call's arrival to its end
    std::uint64_t bytesReceived = 0;     ///< of all messages of the call
    std::uint64_t bytesSent = 0;
    std::string_view result; ///< what Judge said of the response; empty if there was none
};

/// Serves any generated protobuf services on one address, to any client that speaks gRPC.
class LUMO_EXPORT RpcServer
{
public:
    /// Decides about a call before its request is read. False refuses it as unauthenticated, with the reason.
    using Authenticate = std::function<bool(ServerCall& call, std::string& reason)>;

    /// Gets each call when it has ended, on any of the server's threads; `call.method()` is empty if there is
    /// no such method.
    using Observe = std::function<void(const ServerCall& call, const CallReport& report)>;

    /// Returns a word for what a response says, which must live as long as the process. Called on any thread.
    using Judge = std::string_view (*)(const google::protobuf::Message& response);

    struct Options
    {
        std::string address;        ///< "host:port"; port 0 takes a free one
        std::string tlsCertificate; ///< PEM file; empty with the key: plain text
        std::string tlsKey;         ///< PEM file
        int threads = 0;            ///< how many methods of one user run at once; 0: four for each processor
        /// Connections at once, and those of one client address; what is more is closed. 0: as many as the
        /// process's descriptors allow.
        int connections = 0;
        int connectionsOfAddress = 0;
        int callsOfUser = 0;       ///< at once; more are refused with RESOURCE_EXHAUSTED; 0: any number
        Authenticate authenticate; ///< empty: every call is accepted
        Observe observe;           ///< may be empty
        Judge judge = nullptr;     ///< for the observer; may be null
        /// How long a caller may neither send nor take a message of a stream before it is cancelled.
        std::chrono::milliseconds streamLimit = std::chrono::minutes(10);
    };

    RpcServer();
    ~RpcServer(); ///< stops

    RpcServer(const RpcServer&) = delete;
    RpcServer& operator=(const RpcServer&) = delete;

    /// Adds a service before `start`. The server does not own it; it must outlive `stop`.
    void add(google::protobuf::Service* service);
    /// Starts listening; may be called again after `stop`. Returns false, with the reason in `error`, when it
    /// can't.
    bool start(const Options& options, std::string& error);
    /// The port listened on; 0 before `start`.
    int port() const;

    /// What a server does now.
    struct Load
    {
        int connections = 0;
        std::uint64_t refusedConnections = 0; ///< since the start
        int runningCalls = 0;
        std::size_t waiting = 0; ///< requests, and messages of streams, that wait for a thread
    };
    /// Safe from any thread at any time.
    Load load() const;
    /// Reads the files of the TLS certificate again, for new connections; others go on. Safe from any thread
    /// between `start` and `stop`. Returns false, with the reason in `error`, when they are not a certificate
    /// and its key; the server keeps what it has then.
    bool reloadCertificate(std::string& error);
    /// Refuses new calls, gives running ones `graceMilliseconds` to end, cancels the rest and returns when
    /// all methods have answered: a method that keeps its closure must still run it. Must not be called by a
    /// method.
    void stop(int graceMilliseconds = 2000);

private:
    struct Impl;
    std::unique_ptr<Impl> m_Impl;
};

} // namespace wirecall

#endif
