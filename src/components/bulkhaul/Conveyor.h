#ifndef LUMO_BULKHAUL_CONVEYOR_H
#define LUMO_BULKHAUL_CONVEYOR_H

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace bulkhaul {

/// Hands items to a thread of its own, which works on one after the other. A few items wait in between. One
/// thread puts them in.
template <class Item>
class Conveyor
{
public:
    typedef std::function<void(Item&)> Work;

    /// At most `most` items wait. Throws std::system_error when no thread can be started.
    Conveyor(std::size_t most, Work work) : m_Most(most), m_Work(std::move(work)), m_Thread([this] { run(); })
    {
    }

    /// Waits until all items are done.
    ~Conveyor() { end(); }

    Conveyor(const Conveyor&) = delete;
    Conveyor& operator=(const Conveyor&) = delete;

    /// Waits for room. Returns false, and drops the item, once the work on one has failed.
    bool put(Item item)
    {
        std::unique_lock<std::mutex> lock(m_Mutex);
        m_Changed.wait(lock, [this] { return m_Failure || m_Items.size() < m_Most; });
        if (m_Failure)
            return false;
        m_Items.push_back(std::move(item));
        m_Changed.notify_all();
        return true;
    }

    /// Waits until all items are done. Throws what the work on one has thrown.
    void finish()
    {
        end();
        if (m_Failure)
            std::rethrow_exception(m_Failure);
    }

private:
    void end()
    {
        if (!m_Thread.joinable())
            return;
        {
            const std::lock_guard<std::mutex> lock(m_Mutex);
            m_Ended = true;
            m_Changed.notify_all();
        }
        m_Thread.join();
    }

    void run()
    {
        std::unique_lock<std::mutex> lock(m_Mutex);
        for (;;) {
            m_Changed.wait(lock, [this] { return m_Ended || !m_Items.empty(); });
            if (m_Items.empty())
                return;
            Item item = std::move(m_Items.front());
            m_Items.pop_front();
            m_Changed.notify_all();
            lock.unlock();
            std::exception_ptr failure;
            try {
                m_Work(item);
            } catch (...) {
                failure = std::current_exception();
            }
            lock.lock();
            if (failure) {
                m_Failure = failure;
                m_Items.clear();
                m_Changed.notify_all();
                return;
            }
        }
    }

    const std::size_t m_Most;
    const Work m_Work;
    std::mutex m_Mutex; ///< guards what follows, but the thread
    std::condition_variable m_Changed;
    std::deque<Item> m_Items;
    bool m_Ended = false;
    std::exception_ptr m_Failure;
    std::thread m_Thread;
};

} // namespace bulkhaul

#endif
