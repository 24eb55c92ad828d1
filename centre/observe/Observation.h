#ifndef LUMO_CENTRE_OBSERVE_OBSERVATION_H
#define LUMO_CENTRE_OBSERVE_OBSERVATION_H

#include "centre/endpoint/EndpointObserver.h"
#include "centre/observe/CallLog.h"
#include "centre/observe/Metrics.h"

#include <optional>
#include <string>

namespace centre {

struct ObserveOptions
{
    std::string metrics; ///< the address of the metrics, see Metrics; empty: none
    CallLog::Options log;
};

/// The metrics and the call log of a process.
class Observation : public EndpointObserver
{
public:
    /// Throws what Metrics and CallLog throw.
    explicit Observation(const ObserveOptions& options)
    {
        if (options.log.format != CallLog::Format::None)
            m_Log.emplace(options.log);
        if (options.metrics.empty())
            return;
        std::function<std::uint64_t()> dropped;
        if (m_Log)
            dropped = [this] { return m_Log->dropped(); };
        m_Metrics.emplace(options.metrics, dropped);
    }

    /// "host:port"; empty without metrics.
    std::string metricsAddress() const { return m_Metrics ? m_Metrics->address() : std::string(); }
    /// Opens the file of the log again. Throws Error.
    void reopen()
    {
        if (m_Log)
            m_Log->reopen();
    }

    void started(const Observed& endpoint) override
    {
        if (m_Metrics)
            m_Metrics->started(endpoint);
    }
    void stopped(const Observed& endpoint) override
    {
        if (m_Metrics)
            m_Metrics->stopped(endpoint);
    }
    void ended(const Observed& endpoint, const ObservedCall& call,
               const wirecall::CallReport& report) override
    {
        if (m_Metrics)
            m_Metrics->ended(endpoint, call, report);
        if (m_Log)
            m_Log->ended(endpoint, call, report);
    }
    wirecall::RpcServer::Judge judge() const override { return resultOf; }

    /// What endpoints get: null if there is nothing to observe.
    EndpointObserver* observer() { return m_Metrics || m_Log ? this : nullptr; }

private:
    std::optional<CallLog> m_Log;
    std::optional<Metrics> m_Metrics;
};

} // namespace centre

#endif
