#ifndef LUMO_CENTRE_PROGRAM_SERVICEMANAGER_H
#define LUMO_CENTRE_PROGRAM_SERVICEMANAGER_H

#include <csignal>
#include <functional>
#include <string>

namespace centre {

/// Blocks SIGTERM, SIGINT and SIGHUP before any thread starts, so that only `wait` sees them.
class ServiceSignals
{
public:
    ServiceSignals();

    /// Calls `reload` for each SIGHUP; returns at the first of the others. From then on one that comes ends
    /// the process at once.
    void wait(const std::function<void()>& reload) const;

private:
    sigset_t m_Signals;
};

/// Sends a state, such as "READY=1", to the service manager that started the process: systemd's protocol
/// sd_notify, one datagram to the socket that $NOTIFY_SOCKET names. Does nothing without one.
void notifyServiceManager(const std::string& state);

/// Serves until a signal ends it, and reports each state to the service manager. Calls `reload` for each
/// SIGHUP, whose failure is reported on standard error, and `stop` at the end.
void runService(const ServiceSignals& signals, const std::function<void()>& reload,
                const std::function<void()>& stop);

} // namespace centre

#endif
