#include "components/bulkhaul/Bulkhaul.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace bulkhaul {

namespace {

enum Level
{
    kInformation = 0
};

/// The running client. Status lines wait in a queue for its one status thread, so that nobody who
/// reports waits for the application's function.
class Client
{
public:
    void start(int chunksInFlight, int filesInFlight, StatusFunction status)
    {
        const std::lock_guard<std::mutex> lifecycle(m_LifecycleMutex);
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Status = std::move(status);
        m_Lines.emplace_back(kInformation, "bulk transfer client started, " + std::to_string(chunksInFlight) +
                                               " chunks and " + std::to_string(filesInFlight) +
                                               " files in flight");
        m_Wake.notify_one();
        if (!m_Thread.joinable()) {
            m_Ending = false;
            m_Thread = std::thread([this] { deliver(); });
        }
    }

    void end()
    {
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
        std::unique_lock<std::mutex> lock(m_Mutex);
        for (;;) {
            m_Wake.wait(lock, [this] { return m_Ending || !m_Lines.empty(); });
            if (m_Lines.empty())
                return;
            const auto line = std::move(m_Lines.front());
            m_Lines.pop_front();
            const StatusFunction status = m_Status;
            lock.unlock();
            if (status)
                status(line.first, line.second);
            lock.lock();
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
    client().start(chunksInFlight, filesInFlight, std::move(status));
    return true;
}

void EndBulkhaul()
{
    client().end();
}

} // namespace bulkhaul
