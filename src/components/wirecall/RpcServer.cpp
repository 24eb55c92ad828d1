#include "lumo/components/wirecall/RpcServer.h"

#include "components/wirecall/Address.h"
#include "components/wirecall/BoundedMessage.h"
#include "components/wirecall/ReloadableCertificate.h"
#include "components/wirecall/ServerCalls.h"
#include "components/wirecall/ServerListener.h"
#include "components/wirecall/ServerThreads.h"
#include "components/wirecall/WireLimits.h"

#include <grpcpp/resource_quota.h>
#include <grpcpp/security/server_credentials.h>
#include <grpcpp/server_builder.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace wirecall {

namespace {

constexpr int kShortestPingInterval = 5000;
constexpr int kLongestHandshake = 20000; ///< milliseconds that a new connection has for TLS and settings
constexpr int kCallsRequestedAhead = 16;

/// Bounds what arrives at all servers of the process together; never destroyed, as a client's quota.
const grpc::ResourceQuota& arrivingRequests()
{
    static const auto* const quota =
        &(new grpc::ResourceQuota("requests"))->Resize(mayArrive(kMostArrivingRequests));
    return *quota;
}

/// HTTP/2's frames SETTINGS, without content, and GOAWAY with ENHANCE_YOUR_CALM and a reason.
std::string goAway(const char* reason)
{
    std::string bytes("\0\0\0\4\0\0\0\0\0\0\0\0\7\0\0\0\0\0\0\0\0\0\0\0\0\13", 26);
    bytes[11] = static_cast<char>(8 + std::strlen(reason));
    return bytes + reason;
}

} // namespace

struct RpcServer::Impl
{
    std::vector<google::protobuf::Service*> services;
    std::mutex mutex; ///< of the changes of calls, threads and listener
    std::unique_ptr<ServerCalls> calls;
    std::optional<ReloadableCertificate> certificate; ///< of a server with TLS
    /// Belongs to one server, so each start makes a new one.
    std::optional<grpc::AsyncGenericService> generic;
    std::unique_ptr<grpc::ServerCompletionQueue> queue;
    std::unique_ptr<grpc::Server> server;
    std::unique_ptr<ServerThreads> threads;
    std::unique_ptr<grpc::experimental::ExternalConnectionAcceptor> acceptor;
    std::unique_ptr<ServerListener> listener;
    int port = 0;

    /// Replaces what `load` reads meanwhile.
    template <class Part>
    void put(std::unique_ptr<Part>& place, std::unique_ptr<Part> part)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        place.swap(part);
    }

    void endQueue()
    {
        queue->Shutdown();
        put<ServerThreads>(threads, nullptr);
        void* tag = nullptr;
        bool ok = false;
        while (queue->Next(&tag, &ok))
            static_cast<Event*>(tag)->happened(ok);
        server.reset();
        queue.reset();
    }
};

RpcServer::RpcServer() : m_Impl(std::make_unique<Impl>())
{
}

RpcServer::~RpcServer()
{
    stop();
}

void RpcServer::add(google::protobuf::Service* service)
{
    m_Impl->services.push_back(service);
}

bool RpcServer::start(const Options& options, std::string& error)
{
    if (m_Impl->server) {
        error = "the server is already running";
        return false;
    }
    Address address;
    if (!parseAddress(options.address, address)) {
        error = "\"" + options.address + "\" is not an address of the form host:port";
        return false;
    }
    m_Impl->certificate.reset();
    if (!options.tlsCertificate.empty() || !options.tlsKey.empty()) {
        m_Impl->certificate.emplace(options.tlsCertificate, options.tlsKey);
        if (!m_Impl->certificate->load(error))
            return false;
    }

    m_Impl->put(m_Impl->listener, std::make_unique<ServerListener>());
    if (!m_Impl->listener->bind(address.host, address.port)) {
        m_Impl->put<ServerListener>(m_Impl->listener, nullptr);
        error = "can't listen on " + options.address + ": is the port in use, or the host not this machine?";
        return false;
    }

    grpc::ServerBuilder builder;
    m_Impl->acceptor = builder.experimental().AddExternalConnectionAcceptor(
        grpc::ServerBuilder::experimental_type::ExternalConnectionType::FROM_FD,
        m_Impl->certificate ? m_Impl->certificate->credentials() : grpc::InsecureServerCredentials());
    builder.RegisterAsyncGenericService(&m_Impl->generic.emplace());
    builder.SetResourceQuota(arrivingRequests());
    builder.AddChannelArgument(GRPC_COMPRESSION_CHANNEL_ENABLED_ALGORITHMS_BITSET, 1 << GRPC_COMPRESS_NONE);
    builder.AddChannelArgument(GRPC_ARG_ENABLE_PER_MESSAGE_DECOMPRESSION, 0);
    builder.AddChannelArgument(GRPC_ARG_MAX_CONCURRENT_STREAMS, kMostCalls);
    builder.SetMaxReceiveMessageSize(kLargestRequest);
    builder.SetMaxSendMessageSize(kLargestMessage);
    builder.AddChannelArgument(GRPC_ARG_MAX_METADATA_SIZE, kLargestHeaders);
    builder.AddChannelArgument(GRPC_ARG_SERVER_HANDSHAKE_TIMEOUT_MS, kLongestHandshake);
    builder.AddChannelArgument(GRPC_ARG_HTTP2_BDP_PROBE, 0);
    builder.AddChannelArgument(GRPC_ARG_HTTP2_STREAM_LOOKAHEAD_BYTES, kFlowControlWindow);
    builder.AddChannelArgument(GRPC_ARG_HTTP2_MAX_FRAME_SIZE, kLargestFrame);
    builder.AddChannelArgument(GRPC_ARG_HTTP2_MIN_RECV_PING_INTERVAL_WITHOUT_DATA_MS, kShortestPingInterval);
    m_Impl->queue = builder.AddCompletionQueue();
    m_Impl->server = builder.BuildAndStart();
    if (!m_Impl->server) {
        m_Impl->put<ServerListener>(m_Impl->listener, nullptr);
        m_Impl->endQueue();
        error = "can't serve " + options.address;
        return false;
    }
    m_Impl->port = m_Impl->listener->port();
    m_Impl->put(m_Impl->calls, std::make_unique<ServerCalls>(options));
    for (google::protobuf::Service* service : m_Impl->services)
        m_Impl->calls->add(service);
    for (int i = 0; i < kCallsRequestedAhead; ++i)
        m_Impl->calls->takeNext(*m_Impl->generic, *m_Impl->queue);
    const int methods = options.threads > 0
                            ? options.threads
                            : 4 * static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    m_Impl->put(m_Impl->threads, std::make_unique<ServerThreads>(*m_Impl->queue, methods));
    if (!m_Impl->threads->areEnough()) {
        stop(0);
        error = "can't start the threads that serve " + options.address;
        return false;
    }
    const ServerListener::Limits limits{options.connections, options.connectionsOfAddress,
                                        m_Impl->certificate ? nullptr : goAway};
    const auto connected = [acceptor = m_Impl->acceptor.get()](int socket) {
        grpc::experimental::ExternalConnectionAcceptor::NewConnectionParameters connection;
        connection.fd = socket;
        acceptor->HandleNewConnection(&connection);
    };
    if (!m_Impl->listener->start(limits, connected, error)) {
        stop(0);
        return false;
    }
    return true;
}

int RpcServer::port() const
{
    return m_Impl->port;
}

RpcServer::Load RpcServer::load() const
{
    const std::lock_guard<std::mutex> lock(m_Impl->mutex);
    Load load;
    if (m_Impl->listener) {
        load.connections = m_Impl->listener->connections();
        load.refusedConnections = m_Impl->listener->refused();
    }
    if (m_Impl->calls)
        load.runningCalls = m_Impl->calls->running();
    if (m_Impl->threads)
        load.waiting = m_Impl->threads->waiting();
    return load;
}

bool RpcServer::reloadCertificate(std::string& error)
{
    return !m_Impl->certificate || m_Impl->certificate->load(error);
}

void RpcServer::stop(int graceMilliseconds)
{
    if (!m_Impl->server)
        return;
    m_Impl->put<ServerListener>(m_Impl->listener, nullptr);
    m_Impl->server->Shutdown(std::chrono::system_clock::now() + std::chrono::milliseconds(graceMilliseconds));
    m_Impl->calls->waitForEnd();
    m_Impl->endQueue();
    m_Impl->port = 0;
}

} // namespace wirecall
