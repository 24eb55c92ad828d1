#include "centre/endpoint/Endpoint.h"

#include "centre/base/Error.h"

#include <iostream>
#include <utility>

namespace centre {

namespace {

constexpr char kHealth[] = "grpc.health.v1.Health.";

/// "ipv4:127.0.0.1:4711" without the port.
std::string withoutPort(const std::string& peer)
{
    return peer.substr(0, peer.rfind(':'));
}

/// Returns the name of the operation, without package and service; "unknown" for any other text.
std::string_view operationOf(const wirecall::ServerCall& call)
{
    const std::string_view method = call.method();
    return method.empty() ? "unknown" : method.substr(method.rfind('.') + 1);
}

} // namespace

void Endpoint::Hub::hello(google::protobuf::RpcController*, const hubline::HelloReq*,
                          hubline::HelloRsp* response, google::protobuf::Closure* done)
{
    response->set_server("lumo-centre");
    done->Run();
}

Endpoint::Endpoint(ConnectionPool& pool, Faults& faults) : m_Pool(pool), m_Faults(faults), m_Health(pool)
{
    add(m_Hub);
    add(m_Health);
}

void Endpoint::add(google::protobuf::Service& service)
{
    m_Server.add(&m_Services.emplace_back(service, m_Faults));
    m_Health.add(service.GetDescriptor()->full_name());
}

void Endpoint::start(const ListenOptions& options)
{
    requireSafe(options);
    wirecall::RpcServer::Options serverOptions;
    serverOptions.address = options.address;
    serverOptions.tlsCertificate = options.tlsCertificate;
    serverOptions.tlsKey = options.tlsKey;
    serverOptions.connections = options.connections;
    serverOptions.connectionsOfAddress = options.connectionsOfAddress;
    serverOptions.callsOfUser = options.callsOfUser;
    serverOptions.threads = options.methodsOfUser;
    serverOptions.authenticate = [this](wirecall::ServerCall& call, std::string& reason) {
        return authenticate(call, reason);
    };
    if (options.observer != nullptr) {
        serverOptions.judge = options.observer->judge();
        serverOptions.observe = [this, observer = options.observer](const wirecall::ServerCall& call,
                                                                    const wirecall::CallReport& report) {
            observer->ended(*this, {operationOf(call), call.peer(), call.user(), call.group()}, report);
        };
    }
    m_Options = options;
    if (m_Options.observer != nullptr)
        m_Options.observer->started(*this);
    std::string error;
    if (!m_Server.start(serverOptions, error)) {
        stop();
        throw Error(ExitCode::Failed, error);
    }
    const std::string hostAndColon = options.address.substr(0, options.address.rfind(':') + 1);
    m_Address = hostAndColon + std::to_string(m_Server.port());
}

Endpoint::~Endpoint()
{
    stop();
}

void Endpoint::stop()
{
    m_Health.stop();
    m_Server.stop(m_Options.graceMilliseconds);
    if (EndpointObserver* observer = std::exchange(m_Options.observer, nullptr))
        observer->stopped(*this);
}

void Endpoint::reloadCertificate()
{
    std::string error;
    if (!m_Server.reloadCertificate(error))
        throw Error(ExitCode::Failed, error);
}

bool Endpoint::authenticate(wirecall::ServerCall& call, std::string& reason)
{
    if (call.method().rfind(kHealth, 0) == 0) {
        call.setUser("health checks of " + withoutPort(call.peer()), "");
        return true;
    }
    const std::string& token = call.token();
    try {
        if (token.empty()) {
            reason = "the call has no token";
            return false;
        }
        ConnectionPool::Lease connection(m_Pool);
        const Read read(*connection);
        if (const std::optional<User> user = connection->user(token, reason))
            call.setUser(user->name, user->companyName);
    } catch (const std::exception& exception) {
        std::cerr << "lumo-centre: checking a token: " + std::string(exception.what()) + "\n";
        reason = "the token can't be checked now";
    }
    return reason.empty();
}

} // namespace centre
