#include "components/bulkhaul/Progress.h"

#include <algorithm>

namespace bulkhaul {

namespace {

constexpr int kWhole = 100;

void tell(const ProgressFunction& function, const std::string& transferID, int code, int percent)
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
    if (isWanted())
        m_Thread = std::thread([this] { deliver(); });
}

Progress::~Progress()
{
    if (!isWanted())
        return;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Ended = true;
        m_Wake.notify_one();
    }
    m_Thread.join();
}

void Progress::setTotal(std::uint64_t total)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Total = total;
}

void Progress::add(std::uint64_t bytes)
{
    if (!isWanted())
        return;
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Done += bytes;
    if (percent() > m_Told)
        m_Wake.notify_one();
}

void Progress::setResult(int code)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Result = code;
}

/// Below 100: that is told when the target stands.
int Progress::percent() const
{
    if (m_Total == 0)
        return 0;
    if (m_Done >= m_Total)
        return kWhole - 1;
    const double part = static_cast<double>(m_Done) / static_cast<double>(m_Total);
    return std::min(kWhole - 1, static_cast<int>(part * kWhole));
}

void Progress::deliver()
{
    tell(m_Function, m_TransferID, 0, 0);
    std::unique_lock<std::mutex> lock(m_Mutex);
    for (;;) {
        m_Wake.wait(lock, [this] { return m_Ended || percent() > m_Told; });
        if (m_Ended)
            break;
        m_Told = percent();
        const int told = m_Told;
        lock.unlock();
        tell(m_Function, m_TransferID, 0, told);
        lock.lock();
    }
    tell(m_Function, m_TransferID, m_Result, m_Result == kDone ? kWhole : m_Told);
}

} // namespace bulkhaul
