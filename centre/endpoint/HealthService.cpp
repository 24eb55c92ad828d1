#include "centre/endpoint/HealthService.h"

#include "lumo/components/wirecall/RpcServer.h"

#include <exception>
#include <iostream>

namespace centre {

namespace {

constexpr char kAnyCompany[] = "SELECT id FROM company LIMIT 1";

} // namespace

void HealthService::Check(google::protobuf::RpcController* controller,
                          const grpc::health::v1::HealthCheckRequest* request,
                          grpc::health::v1::HealthCheckResponse* response, google::protobuf::Closure* done)
{
    using grpc::health::v1::HealthCheckResponse;
    if (m_Services.count(request->service()) == 0) {
        dynamic_cast<wirecall::ServerCall&>(*controller).setNotFound("no such service");
        return done->Run();
    }
    try {
        ConnectionPool::Lease connection(m_Pool);
        Statement& company = connection->statement(kAnyCompany);
        const ResetAtEnd resetAtEnd(company);
        company.step();
        response->set_status(HealthCheckResponse::SERVING);
    } catch (const std::exception& exception) {
        std::cerr << "lumo-centre: the database can't be read: " + std::string(exception.what()) + "\n";
        response->set_status(HealthCheckResponse::NOT_SERVING);
    }
    done->Run();
}

} // namespace centre
