#include "centre/observe/Metrics.h"

#include "centre/base/Error.h"
#include "centre/database/StatementCounts.h"
#include "centre/observe/CallOutcome.h"
#include "components/wirecall/Address.h"

#include <prometheus/counter.h>
#include <prometheus/exposer.h>
#include <prometheus/histogram.h>
#include <prometheus/registry.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <tuple>
#include <utility>
#include <vector>

namespace centre {

namespace {

using prometheus::ClientMetric;
using prometheus::MetricFamily;
using prometheus::MetricType;

/// The operations of a box that move files, and which way.
constexpr std::pair<std::string_view, const char*> kTransfers[] = {{"read", "download"},
                                                                   {"fetch", "download"},
                                                                   {"assets", "download"},
                                                                   {"finish", "upload"},
                                                                   {"store", "upload"}};

const prometheus::Histogram::BucketBoundaries& durations()
{
    static const prometheus::Histogram::BucketBoundaries seconds = {
        0.0001, 0.00025, 0.0005, 0.001, 0.0025, 0.005, 0.01, 0.025, 0.05, 0.1, 0.25, 0.5, 1, 2.5, 5, 10, 30};
    return seconds;
}

/// What is counted of the calls of one operation of an endpoint that had one result.
struct Series
{
    prometheus::Counter* calls;
    prometheus::Histogram* duration;
    prometheus::Counter* received;
    prometheus::Counter* sent;
    prometheus::Counter* transfers; ///< null for what moves no files
};

/// What endpoints do at the moment of a scrape.
class Present : public prometheus::Collectable
{
public:
    explicit Present(std::function<std::uint64_t()> droppedLines) : m_DroppedLines(std::move(droppedLines)) {}

    void add(const Observed& endpoint)
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Endpoints.push_back(&endpoint);
    }
    void remove(const Observed& endpoint)
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        for (auto each = m_Endpoints.begin(); each != m_Endpoints.end(); ++each)
            if (*each == &endpoint) {
                m_Endpoints.erase(each);
                return;
            }
    }

    std::vector<MetricFamily> Collect() const override
    {
        std::vector<MetricFamily> families = {
            {"lumo_centre_connections", "Connections of clients", MetricType::Gauge, {}},
            {"lumo_centre_refused_connections_total", "Connections beyond a limit", MetricType::Counter, {}},
            {"lumo_centre_running_calls", "Calls that have not ended", MetricType::Gauge, {}},
            {"lumo_centre_waiting_requests", "Requests that wait for a thread", MetricType::Gauge, {}},
            {"lumo_centre_open_transfers", "Transfers that a box knows", MetricType::Gauge, {}},
        };
        std::vector<MetricFamily> pools = {
            {"lumo_centre_pool_open", "Connections to the database", MetricType::Gauge, {}},
            {"lumo_centre_pool_in_use", "Those of them in use", MetricType::Gauge, {}},
            {"lumo_centre_pool_waiting", "Threads that wait for one", MetricType::Gauge, {}},
            {"lumo_centre_pool_limit", "Connections that may be open, 0: any number", MetricType::Gauge, {}},
        };
        {
            const std::lock_guard<std::mutex> lock(m_Mutex);
            for (const Observed* endpoint : m_Endpoints) {
                collect(*endpoint, families);
                collectPools(*endpoint, pools);
            }
        }
        std::move(pools.begin(), pools.end(), std::back_inserter(families));
        const auto addTotal = [&families](const char* name, const char* help, double value) {
            ClientMetric metric;
            metric.counter.value = value;
            families.push_back({name, help, MetricType::Counter, {metric}});
        };
        addTotal("lumo_centre_statements_total", "Statements of SQL that were run",
                 static_cast<double>(statementCounts().count));
        addTotal("lumo_centre_statement_seconds_total", "Time for which they ran",
                 static_cast<double>(statementCounts().nanoseconds) / 1e9);
        if (m_DroppedLines)
            addTotal("lumo_centre_dropped_log_lines_total", "Lines that the call log has lost",
                     static_cast<double>(m_DroppedLines()));
        return families;
    }

private:
    static void collect(const Observed& endpoint, std::vector<MetricFamily>& families)
    {
        const wirecall::RpcServer::Load load = endpoint.load();
        const double values[] = {static_cast<double>(load.connections),
                                 static_cast<double>(load.refusedConnections),
                                 static_cast<double>(load.runningCalls), static_cast<double>(load.waiting),
                                 static_cast<double>(endpoint.openTransfers())};
        for (std::size_t i = 0; i < families.size(); ++i) {
            ClientMetric metric;
            metric.label = {{"server", endpoint.name()}};
            (families[i].type == MetricType::Gauge ? metric.gauge.value : metric.counter.value) = values[i];
            families[i].metric.push_back(metric);
        }
    }

    static void collectPools(const Observed& endpoint, std::vector<MetricFamily>& families)
    {
        const std::pair<const char*, const ConnectionPool*> pools[] = {{"catalogue", &endpoint.pool()},
                                                                       {"replica", endpoint.replica()}};
        for (const auto& [name, pool] : pools) {
            if (pool == nullptr)
                continue;
            const ConnectionPool::Usage usage = pool->usage();
            const int values[] = {usage.open, usage.inUse, usage.waiting, usage.most};
            for (std::size_t i = 0; i < families.size(); ++i) {
                ClientMetric metric;
                metric.label = {{"server", endpoint.name()}, {"pool", name}};
                metric.gauge.value = values[i];
                families[i].metric.push_back(metric);
            }
        }
    }

    const std::function<std::uint64_t()> m_DroppedLines;
    mutable std::mutex m_Mutex;
    std::vector<const Observed*> m_Endpoints;
};

std::string listenedOn(const std::string& address)
{
    wirecall::Address parsed;
    std::string full = address.find(':') == std::string::npos ? "127.0.0.1:" + address : address;
    if (!wirecall::parseAddress(full, parsed))
        throw Error(ExitCode::WrongUse, "not an address for metrics: " + address);
    return full;
}

} // namespace

struct Metrics::Impl
{
    /// Endpoint, operation and result; the texts live as long as the process.
    using Key = std::tuple<const Observed*, const char*, const char*>;

    Impl(const std::string& wanted, std::function<std::uint64_t()> droppedLines)
        : registry(std::make_shared<prometheus::Registry>()),
          present(std::make_shared<Present>(std::move(droppedLines))),
          calls(prometheus::BuildCounter()
                    .Name("lumo_centre_calls_total")
                    .Help("Calls that have ended")
                    .Register(*registry)),
          duration(prometheus::BuildHistogram()
                       .Name("lumo_centre_call_duration_seconds")
                       .Help("Time from a call's arrival to its end")
                       .Register(*registry)),
          received(prometheus::BuildCounter()
                       .Name("lumo_centre_received_bytes_total")
                       .Help("Bytes of the messages that came")
                       .Register(*registry)),
          sent(prometheus::BuildCounter()
                   .Name("lumo_centre_sent_bytes_total")
                   .Help("Bytes of the messages that were sent")
                   .Register(*registry)),
          transfers(prometheus::BuildCounter()
                        .Name("lumo_centre_transfers_total")
                        .Help("Runs of chunks, large files and batches of small files that a box has moved")
                        .Register(*registry)),
          exposer(wanted)
    {
        exposer.RegisterCollectable(registry);
        exposer.RegisterCollectable(present);
    }

    const Series& find(const Observed& endpoint, std::string_view operation, std::string_view result)
    {
        const Key key(&endpoint, operation.data(), result.data());
        {
            const std::shared_lock<std::shared_mutex> lock(mutex);
            if (const auto found = series.find(key); found != series.end())
                return found->second;
        }
        const std::lock_guard<std::shared_mutex> lock(mutex);
        return series.emplace(key, make(endpoint.name(), std::string(operation), std::string(result)))
            .first->second;
    }

    Series make(const std::string& server, const std::string& operation, const std::string& result)
    {
        const std::map<std::string, std::string> labels = {{"server", server}, {"operation", operation}};
        std::map<std::string, std::string> withResult = labels;
        withResult["result"] = result;
        prometheus::Counter* moved = nullptr;
        for (const auto& [name, direction] : kTransfers)
            if (operation == name)
                moved = &transfers.Add({{"server", server}, {"direction", direction}, {"outcome", result}});
        return {&calls.Add(withResult), &duration.Add(labels, durations()), &received.Add(labels),
                &sent.Add(labels), moved};
    }

    std::shared_ptr<prometheus::Registry> registry;
    std::shared_ptr<Present> present;
    prometheus::Family<prometheus::Counter>& calls;
    prometheus::Family<prometheus::Histogram>& duration;
    prometheus::Family<prometheus::Counter>& received;
    prometheus::Family<prometheus::Counter>& sent;
    prometheus::Family<prometheus::Counter>& transfers;
    std::string address;
    std::shared_mutex mutex;
    std::map<Key, Series> series;
    prometheus::Exposer exposer; ///< destroyed first: it reads the members above
};

Metrics::Metrics(const std::string& address, std::function<std::uint64_t()> droppedLines)
{
    const std::string wanted = listenedOn(address);
    try {
        m_Impl = std::make_unique<Impl>(wanted, std::move(droppedLines));
    } catch (const std::exception&) {
        throw Error(ExitCode::Failed, "can't listen on " + wanted +
                                          " for metrics: is the port in use, or the host not this machine?");
    }
    m_Impl->address =
        wanted.substr(0, wanted.rfind(':') + 1) + std::to_string(m_Impl->exposer.GetListeningPorts().front());
}

Metrics::~Metrics() = default;

const std::string& Metrics::address() const
{
    return m_Impl->address;
}

void Metrics::started(const Observed& endpoint)
{
    m_Impl->present->add(endpoint);
}

void Metrics::stopped(const Observed& endpoint)
{
    m_Impl->present->remove(endpoint);
}

void Metrics::ended(const Observed& endpoint, const ObservedCall& call, const wirecall::CallReport& report)
{
    const Series& series = m_Impl->find(endpoint, call.operation, CallOutcome(report).result);
    series.calls->Increment();
    series.duration->Observe(std::chrono::duration<double>(report.duration).count());
    series.received->Increment(static_cast<double>(report.bytesReceived));
    series.sent->Increment(static_cast<double>(report.bytesSent));
    if (series.transfers != nullptr)
        series.transfers->Increment();
}

} // namespace centre
