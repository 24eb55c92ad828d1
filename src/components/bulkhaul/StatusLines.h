#ifndef LUMO_BULKHAUL_STATUSLINES_H
#define LUMO_BULKHAUL_STATUSLINES_H

#include "lumo/components/bulkhaul/Bulkhaul.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace bulkhaul {

enum Level
{
    kInformation = 0,
    kError = 2
};

/// The status lines of the running client. One thread delivers them from a queue, so that a transfer does not
/// wait for the application's function.
class StatusLines
{
public:
    /// Returns false when no thread can be started, or on the thread that delivers the lines.
    bool start(const std::string& firstLine, StatusFunction status);
    void end(const std::string& lastLine);
    /// Queues a line; drops it while the client does not run.
    void write(int level, const std::string& line);

private:
    void deliver();

    std::mutex m_LifecycleMutex; ///< one start or end at a time; guards the thread
    std::thread m_Thread;
    std::mutex m_Mutex; ///< guards what follows
    std::condition_variable m_Wake;
    std::deque<std::pair<int, std::string>> m_Lines;
    StatusFunction m_Status;
    bool m_Running = false;
};

} // namespace bulkhaul

#endif
