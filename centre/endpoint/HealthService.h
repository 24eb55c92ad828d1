#ifndef LUMO_CENTRE_ENDPOINT_HEALTHSERVICE_H
#define LUMO_CENTRE_ENDPOINT_HEALTHSERVICE_H

#include "centre/store/ConnectionPool.h"
#include "endpoint/health.pb.h"

#include <set>
#include <string>

namespace centre {

/// Answers whether an address can serve its services, to anyone: gRPC's health checking protocol. It can
/// while the database can be read.
class HealthService : public grpc::health::v1::Health
{
public:
    explicit HealthService(ConnectionPool& pool) : m_Pool(pool) {}

    /// Before the first call. The name is "package.Service".
    void add(const std::string& service) { m_Services.insert(service); }

    void Check(google::protobuf::RpcController* controller,
               const grpc::health::v1::HealthCheckRequest* request,
               grpc::health::v1::HealthCheckResponse* response, google::protobuf::Closure* done) override;

private:
    ConnectionPool& m_Pool;
    std::set<std::string> m_Services{""}; ///< the empty one is the address as a whole
};

} // namespace centre

#endif
