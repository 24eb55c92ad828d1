#ifndef LUMO_BULKHAUL_PROGRESS_H
#define LUMO_BULKHAUL_PROGRESS_H

#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/components/bulkhaul/TransferEnd.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

namespace bulkhaul {

/// Reports to an application how far a transfer has come, on a thread of its own, so that the transfer never
/// waits for the application; steps that come too fast are skipped. An empty function has no thread and is
/// not called. `setTotal` and `add` are safe from several threads.
class Progress
{
public:
    /// Reports (0, 0). Throws std::system_error when no thread can be started.
    Progress(ProgressFunction function, std::string transferID);
    /// Calls `end` with kFailedHere unless it was called.
    ~Progress();

    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// In bytes; percentages are reported from then on.
    void setTotal(std::uint64_t total);
    void add(std::uint64_t bytes);
    /// Calls the end function of the process, then the progress function for the last time, and returns when
    /// both have returned: with (0, 100), or with the code of `end` and the last percentage.
    void end(const TransferEnd& end);

private:
    void deliver();
    int percent() const;

    const ProgressFunction m_Function;
    const std::string m_TransferID;
    std::mutex m_Mutex; ///< guards what follows
    std::condition_variable m_Wake;
    std::uint64_t m_Total = 0;
    std::uint64_t m_Done = 0;
    int m_Reported = 0;
    const TransferEnd* m_End = nullptr;
    std::thread m_Thread;
};

} // namespace bulkhaul

#endif
