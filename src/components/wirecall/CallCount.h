#ifndef LUMO_WIRECALL_CALLCOUNT_H
#define LUMO_WIRECALL_CALLCOUNT_H

#include <condition_variable>
#include <mutex>

namespace wirecall {

/// Counts calls that have arrived and not ended. Safe from any thread.
class CallCount
{
public:
    void began()
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        ++m_Calls;
    }

    void ended()
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (--m_Calls == 0)
            m_NoneLeft.notify_all();
    }

    int get() const
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return m_Calls;
    }

    void waitForNone() const
    {
        std::unique_lock<std::mutex> lock(m_Mutex);
        m_NoneLeft.wait(lock, [this] { return m_Calls == 0; });
    }

private:
    mutable std::mutex m_Mutex;
    mutable std::condition_variable m_NoneLeft;
    int m_Calls = 0;
};

} // namespace wirecall

#endif
