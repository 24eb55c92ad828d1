#ifndef LUMO_CENTRE_ENDPOINT_HEALTHSERVICE_H
#define LUMO_CENTRE_ENDPOINT_HEALTHSERVICE_H

#include "centre/store/ConnectionPool.h"
#include "endpoint/health.pb.h"

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>

namespace centre {

/// Answers whether an address can serve its services, to anyone: gRPC's health checking protocol. It can
/// while the database can be read and the address is not about to stop.
class HealthService : public grpc::health::v1::Health
{
public:
    explicit HealthService(ConnectionPool& pool) : m_Pool(pool) {}
    ~HealthService() override; ///< after the last call

    /// Before the first call. The name is "package.Service".
    void add(const std::string& service) { m_Services.insert(service); }
    /// The address does not serve from now on. Ends all watches, after they have said so.
    void stop();

    void Check(google::protobuf::RpcController* controller,
               const grpc::health::v1::HealthCheckRequest* request,
               grpc::health::v1::HealthCheckResponse* response, google::protobuf::Closure* done) override;
    /// Looks at the database every second.
    void Watch(google::protobuf::RpcController* controller,
               const grpc::health::v1::HealthCheckRequest* request,
               grpc::health::v1::HealthCheckResponse* response, google::protobuf::Closure* done) override;

private:
    struct Watcher;
    class WatchSource;
    using Status = grpc::health::v1::HealthCheckResponse::ServingStatus;

    Status status();
    void look();
    void announce(Status status);
    void forget(Watcher* watcher);

    ConnectionPool& m_Pool;
    std::set<std::string> m_Services{""}; ///< the empty one is the address as a whole
    std::mutex m_Mutex;                   ///< guards what follows
    std::condition_variable m_Changed;
    bool m_Stopped = false;
    bool m_AtEnd = false;
    std::list<std::shared_ptr<Watcher>> m_Watchers;
    std::thread m_Looks; ///< since the first watch
};

} // namespace centre

#endif
