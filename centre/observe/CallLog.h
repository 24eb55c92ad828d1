#ifndef LUMO_CENTRE_OBSERVE_CALLLOG_H
#define LUMO_CENTRE_OBSERVE_CALLLOG_H

#include "centre/endpoint/EndpointObserver.h"
#include "centre/observe/CallOutcome.h"

#include <cstdint>
#include <memory>
#include <string>

namespace centre {

/// Logs each call in a line of its own. A thread of its own writes, so that a slow disk holds up no call;
/// what does not fit into its queue of 8192 lines replaces the oldest. Lines have no token and no text of a
/// request or an answer, and none can be forged by a name. Safe from any thread.
class CallLog : public EndpointObserver
{
public:
    enum class Format
    {
        None,
        Text, ///< a time, a level and key=value, with quotes where a value needs them
        Json  ///< an object
    };

    struct Options
    {
        Format format = Format::None;
        std::string file; ///< lines are added to it; empty: standard error
        Severity least = Severity::Info;
    };

    /// Throws Error for a file that it can't write.
    explicit CallLog(const Options& options);
    ~CallLog() override; ///< writes what is left; after the last endpoint has stopped

    /// Opens the file by its name again, after it was renamed.
    void reopen();
    /// The number of lines that were lost because writing was too slow.
    std::uint64_t dropped() const;

    void started(const Observed&) override {}
    void stopped(const Observed&) override {}
    void ended(const Observed& endpoint, const ObservedCall& call,
               const wirecall::CallReport& report) override;

private:
    struct Impl;
    std::unique_ptr<Impl> m_Impl;
};

} // namespace centre

#endif
