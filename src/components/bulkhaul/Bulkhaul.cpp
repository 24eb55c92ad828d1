#include "components/bulkhaul/Bulkhaul.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace bulkhaul {

namespace {

enum Level
{
    kInformation = 0
};

/// True on the client's status thread, where the client can't be started or ended.
thread_local bool onStatusThread = false;

/// The running client. Status lines wait in a queue for its one status thread, so that nobody who
/// reports waits for the application's function.
class Client
{
public:
    bool start(int chunksInFlight, int filesInFlight, StatusFunction status)
    {
        if (onStatusThread)
            return false;
        const std::lock_guard<std::mutex> lifecycle(m_LifecycleMutex);
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (!m_Thread.joinable()) {
            m_Ending = false;
            try {
                m_Thread = std::thread([this] { deliver(); });
            } catch (const std::system_error&) {
                return false;
            }
        }
        m_Status = std::move(status);
        m_Lines.emplace_back(kInformation, "bulk transfer client started, " + std::to_string(chunksInFlight) +
                                               " chunks and " + std::to_string(filesInFlight) +
                                               " files in flight");
        m_Wake.notify_one();
        return true;
    }

    void end()
    {
        if (onStatusThread)
            return;
        const std::lock_guard<std::mutex> lifecycle(m_LifecycleMutex);
        if (!m_Thread.joinable())
            return;
        {
            const std::lock_guard<std::mutex> lock(m_Mutex);
            m_Lines.emplace_back(kInformation, "bulk transfer client ended");
            m_Ending = true;
            m_Wake.notify_one();
        }
        m_Thread.join();
        m_Status.clear();
    }

private:
    /// Ends only when every line was delivered.
    void deliver()
    {
        onStatusThread = true;
        std::unique_lock<std::mutex> lock(m_Mutex);
        for (;;) {
            m_Wake.wait(lock, [this] { return m_Ending || !m_Lines.empty(); });
            if (m_Lines.empty())
                return;
            const auto line = std::move(m_Lines.front());
            m_Lines.pop_front();
            const StatusFunction status = m_Status;
            lock.unlock();
            tell(status, line.first, line.second);
            lock.lock();
        }
    }

    static void tell(const StatusFunction& status, int level, const std::string& line)
    {
        try {
            if (status)
                status(level, line);
        } catch (...) {
            // The application's function must not end the process.
        }
    }

    std::mutex m_LifecycleMutex; ///< one start or end at a time
    std::mutex m_Mutex;          ///< guards what follows
    std::condition_variable m_Wake;
    std::deque<std::pair<int, std::string>> m_Lines;
    StatusFunction m_Status;
    bool m_Ending = false;
    std::thread m_Thread;
};

/// Never destroyed: a transfer may still report while the process ends.
Client& client()
{
    static Client* const theClient = new Client;
    return *theClient;
}

} // namespace

bool StartBulkhaul(int chunksInFlight, int filesInFlight, StatusFunction status)
{
    if (chunksInFlight < 1 || filesInFlight < 1)
        return false;
    return client().start(chunksInFlight, filesInFlight, std::move(status));
}

void EndBulkhaul()
{
    client().end();
}

} // namespace bulkhaul
