#include "client/TransferTask.h"

#include "client/Log.h"
#include "lumo/transfer/TransferCodes.h"

namespace lumo::internal {

TransferTask::~TransferTask()
{
    if (!m_Began)
        return;
    const Transfer::Outcome end = outcome();
    // Who waits may open a new session at once.
    m_Connection.reset();
    m_State->end(end);
}

void TransferTask::report(const char* task, int code, int percent)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    TransferEnds& ends = TransferEnds::instance();
    if (!m_Began) {
        m_Began = true;
        Log::instance().forget();
        ends.take(); // of a task that was on this thread before
        m_State->begin(task);
    }
    if (code != 0 && m_Code == 0) {
        m_Code = code;
        // A task that fails reports it on the thread that has just logged why.
        m_Logged = Log::instance().lastReason();
        m_End = ends.take();
    }
    if (code == 0 && percent > m_Percent) {
        m_Percent = percent;
        if (percent == 100)
            m_End = ends.take();
        m_State->advance(percent);
    }
}

std::string TransferTask::reason() const
{
    if (m_End.reason.empty())
        return m_Logged.kind == Reason::Kind::None ? std::string() : describe(m_Logged);
    if (!m_Walks)
        return m_End.reason;
    // The reason begins with the name of the file, unless it is about the call as a whole.
    const std::size_t slash = m_End.boxPath.rfind('/') + 1;
    const std::string name = m_End.boxPath.substr(slash);
    const bool named = m_End.reason.compare(0, name.size(), name) == 0;
    return (named ? m_End.boxPath.substr(0, slash) : m_End.boxPath + ": ") + m_End.reason;
}

Transfer::Outcome TransferTask::outcome() const
{
    Transfer::Outcome outcome;
    if (m_Code != 0)
        outcome = failureOf(m_Code, reason());
    else if (m_Percent < 100)
        outcome = failureOf(transfercodes::kTransferFailed, "it ended without a word");
    if (m_End.calls > 0) {
        outcome.keptFiles = m_End.filesKept;
        outcome.movedBytes = m_End.bytesMoved;
    }
    return outcome;
}

} // namespace lumo::internal
