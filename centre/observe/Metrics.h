#ifndef LUMO_CENTRE_OBSERVE_METRICS_H
#define LUMO_CENTRE_OBSERVE_METRICS_H

#include "centre/endpoint/EndpointObserver.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace centre {

/// What the endpoints of a process do, in numbers for Prometheus, served at "/metrics" of an address of its
/// own, to anyone. Safe from any thread.
class Metrics : public EndpointObserver
{
public:
    /// `address` is "HOST:PORT", or "PORT" for loopback only; port 0 takes a free one. `droppedLines` returns
    /// how many lines the call log has lost; it may be empty. Throws Error for an address that it can't
    /// listen on.
    Metrics(const std::string& address, std::function<std::uint64_t()> droppedLines);
    ~Metrics() override; ///< after the last endpoint has stopped

    /// "host:port", with the port that was taken.
    const std::string& address() const;

    void started(const Observed& endpoint) override;
    void stopped(const Observed& endpoint) override;
    void ended(const Observed& endpoint, const ObservedCall& call,
               const wirecall::CallReport& report) override;

private:
    struct Impl;
    std::unique_ptr<Impl> m_Impl;
};

} // namespace centre

#endif
