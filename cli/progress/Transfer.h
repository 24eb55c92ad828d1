#ifndef LUMO_CLI_PROGRESS_TRANSFER_H
#define LUMO_CLI_PROGRESS_TRANSFER_H

#include "cli/Session.h"

#include "lumo/transfer/TransferCallback.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace cli {

/// One transfer: what is asked for, and how it goes.
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

    std::string source; ///< as messages name it, like the target
    std::string target;
    bool get = true;
    /// Whether the library tells how far it has come; else only that it has ended.
    bool tellsProgress = false;
    bool overwrite = false;
    bool movesFile = false;             ///< of a put: it is not of a folder
    std::optional<std::uint64_t> bytes; ///< of the source, once known
    std::string folder;                 ///< of a get: the local folder it goes to
    /// Starts it; false when nothing was started.
    std::function<bool(const TransferCallback&)> start;
    /// Why it was not started.
    std::function<std::string()> refusal;

    std::size_t number = 0; ///< from 1
    Phase phase = Phase::Waiting;
    std::string taskID;
    bool wasFile = false; ///< what stood at the target before
    bool wasFolder = false;
    int percent = 0;
    int code = 0;
    std::string failure;
    Clock::time_point begin;
    Clock::time_point end;

    bool ended() const { return phase == Phase::Done || phase == Phase::Failed; }
    /// Done because the file was there already.
    bool kept() const { return phase == Phase::Done && wasFile && !overwrite; }
};

/// Runs transfers side by side, as many at once as the library does, and shows how they go. Throws
/// Failure (TransferFailed) when one failed; all others have gone to their end then. SIGINT and SIGTERM
/// end the process at once: what arrived stays for the next attempt, and a message says so.
void runTransfers(std::vector<Transfer> transfers, Session& session);

/// The codes of the library's tasks; the others are the bulk transfer client's.
enum TaskCode
{
    kFolderFailed = 6,
    kCopyFailed = 8,
    kLookupFailed = 10,
    kNoChannel = 101,
    kTransferFailed = 999
};

/// What the code of a failed transfer means. `reason` is what the library's log has told of it, if anything.
std::string failureText(int code, const std::string& reason);

/// Why the library has just refused to start a transfer of or to what was found.
std::string refusalText(Session& session, const Found& found);

} // namespace cli

#endif
