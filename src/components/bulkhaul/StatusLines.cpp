#include "components/bulkhaul/StatusLines.h"

#include <system_error>

namespace bulkhaul {

namespace {

/// True on the thread that delivers the lines. The client can't be started or ended there.
thread_local bool onStatusThread = false;

void report(const StatusFunction& status, int level, const std::string& line)
{
    try {
        if (status)
            status(level, line);
    } catch (...) {
        // The application's function must not end the process.
    }
}

} // namespace

bool StatusLines::start(const std::string& firstLine, StatusFunction status)
{
    if (onStatusThread)
        return false;
    const std::lock_guard<std::mutex> lifecycle(m_LifecycleMutex);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (!m_Running) {
        try {
            m_Thread = std::thread([this] { deliver(); });
            m_Running = true;
        } catch (const std::system_error&) {
            return false;
        }
    }
    m_Status = std::move(status);
    m_Lines.emplace_back(kInformation, firstLine);
    m_Wake.notify_one();
    return true;
}

void StatusLines::end(const std::string& lastLine)
{
    if (onStatusThread)
        return;
    const std::lock_guard<std::mutex> lifecycle(m_LifecycleMutex);
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (!m_Running)
            return;
        m_Lines.emplace_back(kInformation, lastLine);
        m_Running = false;
        m_Wake.notify_one();
    }
    m_Thread.join();
    m_Status.clear();
}

void StatusLines::write(int level, const std::string& line)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (!m_Running)
        return;
    m_Lines.emplace_back(level, line);
    m_Wake.notify_one();
}

/// Returns when the client has ended and every line was delivered.
void StatusLines::deliver()
{
    onStatusThread = true;
    std::unique_lock<std::mutex> lock(m_Mutex);
    for (;;) {
        m_Wake.wait(lock, [this] { return !m_Running || !m_Lines.empty(); });
        if (m_Lines.empty())
            return;
        const auto line = std::move(m_Lines.front());
        m_Lines.pop_front();
        const StatusFunction status = m_Status;
        lock.unlock();
        report(status, line.first, line.second);
        lock.lock();
    }
}

} // namespace bulkhaul
