#ifndef LUMO_BULKHAUL_PROGRESS_H
#define LUMO_BULKHAUL_PROGRESS_H

#include "lumo/components/bulkhaul/Bulkhaul.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

namespace bulkhaul {

/// Tells an application how far a transfer has come, from a thread of its own, so that the transfer never
/// waits for it; steps that come too fast are passed over. Without a function it does nothing. `setTotal`
/// and `add` are safe from several threads.
class Progress
{
public:
    /// Tells (0, 0).
    Progress(ProgressFunction function, std::string transferID);
    /// Tells (0, 100), or (code, the last percentage).
    ~Progress();

    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    bool isWanted() const { return static_cast<bool>(m_Function); }
    /// In bytes, from now on; percentages are told from then on.
    void setTotal(std::uint64_t total);
    void add(std::uint64_t bytes);
    /// The result, before the end.
    void setResult(int code);

private:
    void deliver();
    int percent() const;

    const ProgressFunction m_Function;
    const std::string m_TransferID;
    std::mutex m_Mutex; ///< guards what follows
    std::condition_variable m_Wake;
    std::uint64_t m_Total = 0;
    std::uint64_t m_Done = 0;
    int m_Told = 0;
    int m_Result = kFailedHere;
    bool m_Ended = false;
    std::thread m_Thread;
};

} // namespace bulkhaul

#endif
