#ifndef LUMO_WIRECALL_STREAMWATCH_H
#define LUMO_WIRECALL_STREAMWATCH_H

#include <grpcpp/alarm.h>
#include <grpcpp/completion_queue.h>

#include <chrono>
#include <mutex>
#include <optional>

namespace wirecall {

/// Notices that the caller of a stream neither sends nor takes a message. Safe from any thread.
class StreamWatch
{
public:
    typedef std::chrono::milliseconds Limit;

    /// A step that depends on the caller has begun or ended.
    void stepBegan()
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_WaitingSince = Clock::now();
    }
    void stepEnded()
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_WaitingSince.reset();
    }

    /// Whether one step has lasted for `limit`.
    bool isStalled(Limit limit)
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return m_WaitingSince && Clock::now() - *m_WaitingSince >= limit;
    }

    /// Has an event with `tag` come from `queue` when it is time to look whether the stream has stalled, or
    /// when `stop` is called. Returns false, and no event comes, once `stop` was called.
    bool lookLater(grpc::CompletionQueue& queue, Limit limit, void* tag)
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (m_Stopped)
            return false;
        const auto waited = m_WaitingSince ? Clock::now() - *m_WaitingSince : Clock::duration::zero();
        const auto pause = std::chrono::duration_cast<std::chrono::microseconds>(limit - waited);
        m_Alarm.emplace().Set(&queue, std::chrono::system_clock::now() + pause, tag);
        return true;
    }

    void stop()
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Stopped = true;
        if (m_Alarm)
            m_Alarm->Cancel();
    }

private:
    using Clock = std::chrono::steady_clock;

    std::mutex m_Mutex; ///< guards what follows
    std::optional<Clock::time_point> m_WaitingSince;
    std::optional<grpc::Alarm> m_Alarm;
    bool m_Stopped = false;
};

} // namespace wirecall

#endif
