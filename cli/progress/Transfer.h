#ifndef LUMO_CLI_PROGRESS_TRANSFER_H
#define LUMO_CLI_PROGRESS_TRANSFER_H

#include "lumo/client/Transfers.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace cli {

class TreeReport;

/// A transfer that was started; while it lives, its observer may be called.
using StartedTransfer = std::shared_ptr<void>;

/// One transfer: what the user asked for, and its state.
struct Transfer
{
    enum class Phase
    {
        Waiting,
        Running,
        Done,
        Failed
    };
    using Clock = std::chrono::steady_clock;

    std::string source; ///< the name in messages, like the target
    std::string target;
    bool get = true;
    /// Whether the library reports percents; otherwise only the end.
    bool reportsProgress = false;
    bool overwrite = false;
    bool movesFile = false;             ///< of a put: a file, not a folder
    std::optional<std::uint64_t> bytes; ///< of the source; absent until it is known
    std::string folder;                 ///< of a get: the local folder to write to
    /// Whether a transfer that is not started ends the command; otherwise it counts as failed.
    bool mustStart = false;
    /// Throws lumo::Error when nothing was started.
    std::function<StartedTransfer(const lumo::Transfers::Options&)> start;
    std::shared_ptr<TreeReport> tree; ///< of a transfer that goes on past files that fail; otherwise null

    std::size_t number = 0; ///< from 1
    Phase phase = Phase::Waiting;
    std::string taskID;
    bool wasFile = false; ///< what was at the target before
    bool wasFolder = false;
    int percent = 0;
    int code = 0;
    std::string failure;
    Clock::time_point begin;
    Clock::time_point end;

    bool ended() const { return phase == Phase::Done || phase == Phase::Failed; }
    /// Whether it is done because the file existed already.
    bool kept() const { return phase == Phase::Done && wasFile && !overwrite; }
};

/// Runs transfers side by side, as many at once as the library does, and shows how they go. Throws Failure
/// (TransferFailed) when one failed; all others have gone to their end then. SIGINT and SIGTERM end the
/// process at once: a message says that what arrived stays for the next attempt.
void runTransfers(std::vector<Transfer> transfers, bool json);

} // namespace cli

#endif
