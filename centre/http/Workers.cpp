#include "centre/http/Workers.h"

#include <functional>
#include <utility>

namespace centre {

Workers::Workers(std::size_t threads, std::size_t mostOfUser) : m_Queue(mostOfUser)
{
    for (std::size_t i = 0; i < threads; ++i)
        m_Threads.emplace_back([this] { run(); });
}

Workers::~Workers()
{
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_AtEnd = true;
    }
    m_Changed.notify_all();
    for (std::thread& thread : m_Threads)
        thread.join();
}

void Workers::push(const std::string& user, std::function<void()> work)
{
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Queue.push(std::hash<std::string>()(user) | 1, std::move(work)); // lane 0 has no bound
    }
    m_Changed.notify_one();
}

std::size_t Workers::waiting() const
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Queue.size();
}

void Workers::run()
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    for (;;) {
        m_Changed.wait(lock, [this] { return m_Queue.hasNext() || (m_AtEnd && m_Queue.size() == 0); });
        if (!m_Queue.hasNext())
            return;
        const auto [lane, work] = m_Queue.next();
        lock.unlock();
        work();
        lock.lock();
        m_Queue.end(lane);
        if (m_AtEnd)
            m_Changed.notify_all();
        else if (m_Queue.hasNext())
            m_Changed.notify_one();
    }
}

} // namespace centre
