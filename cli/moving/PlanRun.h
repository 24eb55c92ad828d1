#ifndef LUMO_CLI_MOVING_PLANRUN_H
#define LUMO_CLI_MOVING_PLANRUN_H

#include "cli/moving/Mover.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace cli {

/// How to carry out a plan.
struct RunOptions
{
    unsigned int transfers = 4; ///< files at once
    unsigned int retries = 2;   ///< after a failure that may pass, of each file
    bool stopAtFirst = false;   ///< the first failure ends it
};

/// What became of a plan.
struct RunResult
{
    Counts counts;
    std::uint64_t movedBytes = 0;
    bool lost = false; ///< the connection was lost and did not come back; the rest was not tried
};

/// Carries out a plan: as a whole if that is possible and pays, and file by file, several at once, where it
/// is not or has failed. What fails does not stop the others. Files are removed last, and only if nothing
/// failed.
class PlanRun
{
public:
    /// Hears of the share that is done, 0 to 100, and of each failure with the item's path, on any thread,
    /// one at a time.
    using Advanced = std::function<void(int percent)>;
    using Failed = std::function<void(const std::string& path, const std::string& reason)>;

    PlanRun(Plan& plan, Mover& mover, const RunOptions& options, Advanced advanced, Failed failed);

    RunResult run();

private:
    bool movesAsWhole() const;
    bool moveAsWhole();
    void moveEach();
    void work(std::atomic<std::size_t>& next);
    void carryOut(PlanItem& item);
    void moveFile(PlanItem& item);
    void removeRest();
    void fail(PlanItem& item, const std::string& reason);
    void advance(const PlanItem& item);
    /// Waits longer from attempt to attempt.
    static void pause(unsigned int attempt);
    bool hasEnded() const { return m_Lost || (m_Options.stopAtFirst && m_AnyFailed); }

    Plan& m_Plan;
    Mover& m_Mover;
    const RunOptions m_Options;
    const Advanced m_Advanced;
    const Failed m_Failed;
    std::mutex m_Mutex;
    std::uint64_t m_Weight = 0; ///< of all: a file counts as one byte more than it has
    std::uint64_t m_Done = 0;
    int m_Percent = 0;
    std::atomic<std::uint64_t> m_MovedBytes{0};
    std::atomic<bool> m_Lost{false};
    std::atomic<bool> m_AnyFailed{false};
};

} // namespace cli

#endif
