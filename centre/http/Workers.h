#ifndef LUMO_CENTRE_HTTP_WORKERS_H
#define LUMO_CENTRE_HTTP_WORKERS_H

#include "components/wirecall/FairQueue.h"

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace centre {

/// Threads for what takes long. Users have turns, and of each user only so much runs at once.
class Workers
{
public:
    Workers(std::size_t threads, std::size_t mostOfUser);
    ~Workers(); ///< after all work has run

    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    /// The work must not throw. Safe from any thread.
    void push(const std::string& user, std::function<void()> work);
    /// How much waits for a thread. Safe from any thread.
    std::size_t waiting() const;

private:
    void run();

    mutable std::mutex m_Mutex; ///< guards what follows
    std::condition_variable m_Changed;
    bool m_AtEnd = false;
    wirecall::FairQueue<std::function<void()>> m_Queue;
    std::vector<std::thread> m_Threads;
};

} // namespace centre

#endif
