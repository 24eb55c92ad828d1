#ifndef LUMO_CENTRE_BASE_EVERYSECOND_H
#define LUMO_CENTRE_BASE_EVERYSECOND_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace centre {

/// Runs work, which must not throw, on a thread of its own: a second after it has run, it runs again, until
/// the object is destroyed.
class EverySecond
{
public:
    explicit EverySecond(std::function<void()> work) : m_Work(std::move(work)) {}
    ~EverySecond()
    {
        {
            const std::lock_guard<std::mutex> lock(m_Mutex);
            m_AtEnd = true;
        }
        m_Changed.notify_all();
        m_Thread.join();
    }
    EverySecond(const EverySecond&) = delete;
    EverySecond& operator=(const EverySecond&) = delete;

private:
    void run()
    {
        std::unique_lock<std::mutex> lock(m_Mutex);
        while (!m_Changed.wait_for(lock, std::chrono::seconds(1), [this] { return m_AtEnd; })) {
            lock.unlock();
            m_Work();
            lock.lock();
        }
    }

    const std::function<void()> m_Work;
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    bool m_AtEnd = false;
    std::thread m_Thread{[this] { run(); }};
};

} // namespace centre

#endif
