#include "client/TransferState.h"

#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/transfer/TransferCodes.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace lumo::internal {

namespace {

/// What the codes of the library's own tasks mean.
const char* textOfTaskCode(int code)
{
    switch (code) {
    case transfercodes::kFolderNotMade:
        return "a local folder can't be made or written";
    case transfercodes::kFileNotCopied:
        return "a local file can't be made or copied";
    case transfercodes::kNotInCatalogue:
        return "the catalogue failed a look-up on the way";
    case transfercodes::kNoChannel:
        return "the storage box is not reached";
    case transfercodes::kTransferFailed:
        return "the transfer failed";
    default:
        return nullptr;
    }
}

/// After which failures the same transfer goes on where this one stopped.
bool resumes(int code)
{
    static constexpr int kCodes[] = {transfercodes::kNotInCatalogue, bulkhaul::kNoConnection,
                                     bulkhaul::kStalled, bulkhaul::kNoSpace};
    return std::find(std::begin(kCodes), std::end(kCodes), code) != std::end(kCodes);
}

thread_local bool observing = false;

} // namespace

Transfer::Outcome failureOf(int code, const std::string& reason)
{
    Transfer::Outcome outcome;
    outcome.code = code;
    const char* const own = textOfTaskCode(code);
    const char* const text = own != nullptr ? own : bulkhaul::textOf(code);
    if (text == nullptr)
        outcome.text = "the transfer failed with code " + std::to_string(code);
    else
        outcome.text = text + (reason.empty() ? "" : " (" + reason + ")");
    outcome.resumes = resumes(code);
    return outcome;
}

void TransferState::begin(const std::string& task)
{
    Transfer::Progress progress;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Progress.task = task;
        progress = m_Progress;
    }
    notify(progress);
}

void TransferState::advance(int percent)
{
    Transfer::Progress progress;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Progress.percent = percent;
        progress = m_Progress;
    }
    notify(progress);
}

void TransferState::end(const Transfer::Outcome& outcome)
{
    Transfer::Progress progress = this->progress();
    progress.outcome = outcome;
    notify(progress);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Progress.outcome = outcome;
    m_Ended.notify_all();
}

Transfer::Progress TransferState::progress() const
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Progress;
}

Transfer::Outcome TransferState::wait() const
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    m_Ended.wait(lock, [this] { return m_Progress.outcome.has_value(); });
    return *m_Progress.outcome;
}

std::optional<Transfer::Outcome> TransferState::wait(std::chrono::milliseconds limit) const
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    m_Ended.wait_for(lock, limit, [this] { return m_Progress.outcome.has_value(); });
    return m_Progress.outcome;
}

void TransferState::detach()
{
    const std::lock_guard<std::recursive_mutex> lock(m_Calling);
    m_Observer = nullptr;
}

void TransferState::notify(const Transfer::Progress& progress)
{
    const std::lock_guard<std::recursive_mutex> lock(m_Calling);
    // The copy lives on when the observer detaches itself.
    if (const Transfer::Observer observer = m_Observer) {
        const bool outer = std::exchange(observing, true); // it may start a transfer that ends at once
        observer(progress);
        observing = outer;
    }
}

bool TransferState::isObserving()
{
    return observing;
}

} // namespace lumo::internal
