#include "centre/endpoint/HealthService.h"

#include "components/wirecall/Streams.h"
#include "lumo/components/wirecall/RpcServer.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <iostream>
#include <utility>

namespace centre {

using grpc::health::v1::HealthCheckRequest;
using grpc::health::v1::HealthCheckResponse;

namespace {

const Sql kAnyCompany("SELECT id FROM company LIMIT 1");
constexpr std::chrono::seconds kInterval(1);

} // namespace

/// One watch of a service.
struct HealthService::Watcher
{
    google::protobuf::RpcController* call; ///< until it is forgotten
    bool isKnown;                          ///< the service that it asks about
    std::atomic<int> status;
    std::atomic<bool> over{false}; ///< no further status will come
};

/// The changes of a status that have not been sent.
class HealthService::WatchSource : public wirecall::StreamSource
{
public:
    WatchSource(std::shared_ptr<Watcher> watcher, HealthCheckResponse& response)
        : m_Watcher(std::move(watcher)), m_Response(response)
    {
    }

    bool isWaiting() override { return !m_Watcher->over && m_Watcher->status == m_Sent; }

    bool next(wirecall::OutgoingBuffer&) override
    {
        const int status = m_Watcher->status;
        if (std::exchange(m_Sent, status) == status)
            return false;
        m_Response.set_status(static_cast<Status>(status));
        return true;
    }

private:
    const std::shared_ptr<Watcher> m_Watcher;
    HealthCheckResponse& m_Response;
    int m_Sent = -1;
};

HealthService::~HealthService()
{
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_AtEnd = true;
        m_Changed.notify_all();
    }
    if (m_Looks.joinable())
        m_Looks.join();
}

void HealthService::stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Stopped = true;
    }
    announce(HealthCheckResponse::NOT_SERVING);
}

void HealthService::Check(google::protobuf::RpcController* controller, const HealthCheckRequest* request,
                          HealthCheckResponse* response, google::protobuf::Closure* done)
{
    if (m_Services.count(request->service()) == 0)
        dynamic_cast<wirecall::ServerCall&>(*controller).setNotFound("no such service");
    else
        response->set_status(status());
    done->Run();
}

void HealthService::Watch(google::protobuf::RpcController* controller, const HealthCheckRequest* request,
                          HealthCheckResponse* response, google::protobuf::Closure*)
{
    const bool isKnown = m_Services.count(request->service()) != 0;
    const auto watcher = std::make_shared<Watcher>();
    watcher->call = controller;
    watcher->isKnown = isKnown;
    watcher->status = isKnown ? status() : HealthCheckResponse::SERVICE_UNKNOWN;
    wirecall::sendStream(controller, std::make_unique<WatchSource>(watcher, *response));
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Watchers.push_back(watcher);
        if (m_Stopped) {
            watcher->status = HealthCheckResponse::NOT_SERVING;
            watcher->over = true;
        }
        if (!m_Looks.joinable())
            m_Looks = std::thread([this] { look(); });
    }
    controller->NotifyOnCancel(google::protobuf::NewCallback(this, &HealthService::forget, watcher.get()));
}

HealthService::Status HealthService::status()
{
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (m_Stopped)
            return HealthCheckResponse::NOT_SERVING;
    }
    try {
        ConnectionPool::Lease connection(m_Pool);
        Statement& company = connection->statement(kAnyCompany);
        const ResetAtEnd resetAtEnd(company);
        company.step();
        return HealthCheckResponse::SERVING;
    } catch (const std::exception& exception) {
        std::cerr << "lumo-centre: the database can't be read: " + std::string(exception.what()) + "\n";
        return HealthCheckResponse::NOT_SERVING;
    }
}

void HealthService::look()
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    while (!m_Changed.wait_for(lock, kInterval, [this] { return m_AtEnd; })) {
        if (m_Watchers.empty())
            continue;
        lock.unlock();
        announce(status());
        lock.lock();
    }
}

void HealthService::announce(Status status)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    for (const auto& watcher : m_Watchers) {
        if (watcher->isKnown)
            watcher->status = m_Stopped ? HealthCheckResponse::NOT_SERVING : status;
        watcher->over = m_Stopped;
        wirecall::wakeStream(watcher->call);
    }
}

void HealthService::forget(Watcher* watcher)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    watcher->over = true;
    wirecall::wakeStream(watcher->call); // a stream that waits does not notice that the caller has gone
    m_Watchers.remove_if([watcher](const auto& each) { return each.get() == watcher; });
}

} // namespace centre
