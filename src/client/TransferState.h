#ifndef LUMO_CLIENT_TRANSFERSTATE_H
#define LUMO_CLIENT_TRANSFERSTATE_H

#include "lumo/client/Transfers.h"

#include <condition_variable>
#include <mutex>

namespace lumo::internal {

/// What the library's threads and the owner of a Transfer share.
class TransferState
{
public:
    explicit TransferState(const Transfer::Observer& observer) : m_Observer(observer) {}

    void begin(const std::string& task);
    void advance(int percent);
    void end(const Transfer::Outcome& outcome);

    Transfer::Progress progress() const;
    Transfer::Outcome wait() const;
    std::optional<Transfer::Outcome> wait(std::chrono::milliseconds limit) const;

    /// Drops the observer, which runs no more when this returns, unless it is the caller.
    void detach();

    /// Whether the caller is an observer, of any transfer.
    static bool isObserving();

private:
    void notify(const Transfer::Progress& progress);

    mutable std::mutex m_Mutex;
    mutable std::condition_variable m_Ended;
    Transfer::Progress m_Progress;

    /// Held while the observer runs, which may detach itself.
    std::recursive_mutex m_Calling;
    Transfer::Observer m_Observer;
};

/// What the code of a failed transfer means, with the reason if known.
Transfer::Outcome failureOf(int code, const std::string& reason);

} // namespace lumo::internal

#endif
