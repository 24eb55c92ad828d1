#include "centre/StalledCalls.h"

#include <algorithm>
#include <chrono>

namespace centre {

namespace {

// How soon a call ends after its caller has gone.
constexpr std::chrono::milliseconds kLookInterval(20);

} // namespace

StalledCalls::StalledCalls() : m_Watcher([this] { watch(); })
{
}

StalledCalls::~StalledCalls()
{
    end();
    m_Watcher.join();
}

void StalledCalls::hold(google::protobuf::RpcController* controller, google::protobuf::Closure* done)
{
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (!m_Ended) {
            m_Calls.push_back({controller, done});
            m_Changed.notify_one();
            return;
        }
    }
    controller->SetFailed("the centre stops");
    done->Run();
}

void StalledCalls::end()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Ended = true;
    m_Changed.notify_one();
}

void StalledCalls::watch()
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    while (!m_Ended || !m_Calls.empty()) {
        if (m_Calls.empty())
            m_Changed.wait(lock, [this] { return m_Ended || !m_Calls.empty(); });
        else
            m_Changed.wait_for(lock, kLookInterval, [this] { return m_Ended; });
        const std::vector<Call> ended = takeEnded();
        lock.unlock();
        for (const Call& call : ended) {
            call.controller->SetFailed("the call was held until its end");
            call.done->Run();
        }
        lock.lock();
    }
}

std::vector<StalledCalls::Call> StalledCalls::takeEnded()
{
    const auto waiting = std::partition(m_Calls.begin(), m_Calls.end(), [this](const Call& call) {
        return m_Ended || call.controller->IsCanceled();
    });
    const std::vector<Call> ended(m_Calls.begin(), waiting);
    m_Calls.erase(m_Calls.begin(), waiting);
    return ended;
}

} // namespace centre
