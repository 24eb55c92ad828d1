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
    Log& log = Log::instance();
    if (!m_Began) {
        m_Began = true;
        log.forget();
        m_State->begin(task);
    }
    if (code != 0 && m_Code == 0) {
        m_Code = code;
        // A task that fails reports it on the thread that has just logged why.
        const Reason reason = log.lastReason();
        m_Reason = reason.kind == Reason::Kind::None ? std::string() : describe(reason);
        m_ClientTransfer = log.clientTransfer();
    }
    if (code == 0 && percent > m_Percent) {
        m_Percent = percent;
        m_ClientTransfer = log.clientTransfer();
        m_State->advance(percent);
    }
}

Transfer::Outcome TransferTask::outcome() const
{
    const ClientEnd end = Log::instance().clientEnd(m_ClientTransfer, m_Code, m_Reason);
    if (m_Code != 0)
        return failureOf(m_Code, end.reason.empty() ? m_Reason : end.reason);
    if (m_Percent < 100)
        return failureOf(transfercodes::kTransferFailed, "it ended without a word");
    Transfer::Outcome outcome;
    outcome.keptFiles = end.keptFiles;
    return outcome;
}

} // namespace lumo::internal
