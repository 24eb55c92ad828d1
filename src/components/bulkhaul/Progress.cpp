#include "components/bulkhaul/Progress.h"

#include "components/bulkhaul/EndFunction.h"

#include <algorithm>

namespace bulkhaul {

namespace {

constexpr int kComplete = 100;

void report(const ProgressFunction& function, const std::string& transferID, int code, int percent)
{
    try {
        function(transferID, code, percent);
    } catch (...) {
        // The application's function must not end the process.
    }
}

} // namespace

Progress::Progress(ProgressFunction function, std::string transferID)
    : m_Function(std::move(function)), m_TransferID(std::move(transferID))
{
    if (m_Function)
        m_Thread = std::thread([this] { deliver(); });
}

Progress::~Progress()
{
    if (m_End != nullptr)
        return;
    TransferEnd unknown;
    unknown.code = kFailedHere;
    end(unknown);
}

void Progress::setTotal(std::uint64_t total)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Total = total;
}

void Progress::add(std::uint64_t bytes)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Done += bytes;
    if (percent() > m_Reported)
        m_Wake.notify_one();
}

void Progress::end(const TransferEnd& end)
{
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_End = &end;
        m_Wake.notify_one();
    }
    if (m_Function)
        m_Thread.join();
    else
        callEndFunction(end);
}

/// Below 100, which is reported at the end only.
int Progress::percent() const
{
    if (m_Total == 0)
        return 0;
    if (m_Done >= m_Total)
        return kComplete - 1;
    const double part = static_cast<double>(m_Done) / static_cast<double>(m_Total);
    return std::min(kComplete - 1, static_cast<int>(part * kComplete));
}

void Progress::deliver()
{
    report(m_Function, m_TransferID, 0, 0);
    std::unique_lock<std::mutex> lock(m_Mutex);
    for (;;) {
        m_Wake.wait(lock, [this] { return m_End != nullptr || percent() > m_Reported; });
        if (m_End != nullptr)
            break;
        const int reported = m_Reported = percent();
        lock.unlock();
        report(m_Function, m_TransferID, 0, reported);
        lock.lock();
    }
    callEndFunction(*m_End);
    report(m_Function, m_TransferID, m_End->code, m_End->code == kDone ? kComplete : m_Reported);
}

} // namespace bulkhaul
