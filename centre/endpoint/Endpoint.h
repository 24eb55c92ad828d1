#ifndef LUMO_CENTRE_ENDPOINT_ENDPOINT_H
#define LUMO_CENTRE_ENDPOINT_ENDPOINT_H

#include "centre/endpoint/EndpointObserver.h"
#include "centre/endpoint/FaultyService.h"
#include "centre/endpoint/HealthService.h"
#include "centre/endpoint/ListenOptions.h"
#include "centre/store/ConnectionPool.h"
#include "hubline.pb.h"
#include "lumo/components/wirecall/RpcServer.h"

#include <cstddef>
#include <functional>
#include <list>
#include <string>
#include <utility>

namespace centre {

/// Serves services at an address, to users of the data folder only, with fault switches before the services,
/// with the service that says hello, and to anyone the one that says whether it is healthy.
class Endpoint : public Observed
{
public:
    Endpoint(ConnectionPool& pool, Faults& faults);
    ~Endpoint() override; ///< stops

    Endpoint(const Endpoint&) = delete;
    Endpoint& operator=(const Endpoint&) = delete;

    /// To be called before `start`; the service must outlive `stop`.
    void add(google::protobuf::Service& service);
    /// Throws Error for an address that it can't listen on, or plain text beyond this machine.
    void start(const ListenOptions& options);
    /// Takes no new calls, gives running ones the grace time of the options, then cancels them.
    void stop();
    /// Reads the files of the TLS certificate again, for new connections. Throws Error, and keeps what it
    /// has, when they are not a certificate and its key.
    void reloadCertificate();

    /// Before `start`: a function that returns how many transfers the services know.
    void countTransfers(std::function<std::size_t()> count) { m_OpenTransfers = std::move(count); }

    /// Before `start`: the pool of a replica, for the metrics.
    void observe(const ConnectionPool* replica) { m_Replica = replica; }

    const ConnectionPool& pool() const override { return m_Pool; }
    const ConnectionPool* replica() const override { return m_Replica; }
    std::size_t openTransfers() const override { return m_OpenTransfers ? m_OpenTransfers() : 0; }
    const std::string& name() const override { return m_Options.name; }
    wirecall::RpcServer::Load load() const override { return m_Server.load(); }
    int port() const { return m_Server.port(); }
    /// "host:port", with the port that was taken.
    const std::string& address() const { return m_Address; }

private:
    class Hub : public hubline::HubServices
    {
        void hello(google::protobuf::RpcController* controller, const hubline::HelloReq* request,
                   hubline::HelloRsp* response, google::protobuf::Closure* done) override;
    };

    bool authenticate(wirecall::ServerCall& call, std::string& reason);

    ConnectionPool& m_Pool;
    Faults& m_Faults;
    Hub m_Hub;
    const ConnectionPool* m_Replica = nullptr;
    HealthService m_Health;
    std::list<FaultyService> m_Services;
    ListenOptions m_Options;
    std::string m_Address;
    std::function<std::size_t()> m_OpenTransfers;
    wirecall::RpcServer m_Server; ///< destroyed first: its calls use the members above
};

} // namespace centre

#endif
