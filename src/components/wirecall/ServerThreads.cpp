#include "components/wirecall/ServerThreads.h"

#include "components/wirecall/HandOver.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <system_error>

namespace wirecall {

namespace {

constexpr std::chrono::milliseconds kTick(2);
constexpr int kTicksToSleep = 20; ///< without an event

/// The threads for `ofUser` events of one user at once, with one more that took long without being expected
/// to, those for other users, and the leader.
int countOf(int ofUser)
{
    return ofUser + std::max(2, ofUser / 4) + 1;
}

} // namespace

ServerThreads::ServerThreads(grpc::ServerCompletionQueue& queue, int ofUser)
    : m_Queue(queue), m_Waiting(static_cast<std::size_t>(ofUser))
{
    const int count = countOf(ofUser);
    m_Threads.reserve(static_cast<std::size_t>(count));
    try {
        for (int i = 0; i < count; ++i)
            m_Threads.emplace_back([this] { run(); });
    } catch (const std::system_error&) {
        // Fewer threads do the same work.
    }
}

ServerThreads::~ServerThreads()
{
    for (std::thread& thread : m_Threads)
        thread.join();
}

std::size_t ServerThreads::waiting() const
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Waiting.size();
}

void ServerThreads::run()
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    for (;;) {
        if (m_Waiting.hasNext()) {
            const auto [lane, waiting] = m_Waiting.next();
            lock.unlock();
            waiting.first->happened(waiting.second);
            lock.lock();
            m_Waiting.end(lane);
        } else if (m_AtEnd) {
            return;
        } else if (!m_IsLed) {
            lead(lock);
        } else {
            rest(lock);
        }
    }
}

void ServerThreads::lead(std::unique_lock<std::mutex>& lock)
{
    m_IsLed = true;
    const std::uint64_t term = ++m_Term;
    lock.unlock();
    void* tag = nullptr;
    bool ok = false;
    while (m_Term == term) {
        if (!m_Queue.Next(&tag, &ok)) {
            lock.lock();
            m_AtEnd = true;
            m_ForDeputy.notify_all();
            while (!m_Resting.empty())
                callOther();
            return;
        }
        takeOver(&m_Queue);
        handle(*static_cast<Event*>(tag), ok);
    }
    lock.lock();
}

void ServerThreads::handle(Event& event, bool ok)
{
    const std::size_t lane = event.lane();
    const bool takesLong = event.mayTakeLong() || (lane != 0 && m_Waiting.anyFull());
    if (takesLong ? !giveLeadAway(lane) : m_Free == 0) {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Waiting.push(lane, {&event, ok});
        // A thread that has become free meanwhile would not see it.
        if (m_Waiting.hasNext())
            m_ForDeputy.notify_one();
        return;
    }
    if (takesLong) {
        event.happened(ok);
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Waiting.end(lane);
        return;
    }
    std::uint64_t number = ++m_Handled;
    m_CurrentLane = lane;
    m_Current = number;
    if (m_DeputySleeps)
        callDeputy();
    event.happened(ok);
    if (m_Current.compare_exchange_strong(number, 0))
        return;
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Waiting.end(lane); // the deputy has counted it
}

bool ServerThreads::giveLeadAway(std::size_t lane)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_Free == 0 || !m_Waiting.begin(lane))
        return false;
    ++m_Term;
    m_IsLed = false;
    // The deputy goes on watching if another can lead.
    if (m_HasDeputy && m_Free == 1)
        m_ForDeputy.notify_one();
    else
        callOther();
    return true;
}

void ServerThreads::callDeputy()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_ForDeputy.notify_one();
}

/// Calls the thread that has rested for the shortest time: its memory may still be in the processor's cache.
void ServerThreads::callOther()
{
    if (m_Resting.empty())
        return;
    m_Resting.back()->notify_one();
    m_Resting.pop_back();
}

void ServerThreads::rest(std::unique_lock<std::mutex>& lock)
{
    ++m_Free;
    std::condition_variable called;
    while (m_HasDeputy && !isWanted()) {
        m_Resting.push_back(&called);
        called.wait(lock);
        m_Resting.erase(std::remove(m_Resting.begin(), m_Resting.end(), &called), m_Resting.end());
    }
    if (!isWanted())
        watch(lock);
    --m_Free;
}

void ServerThreads::watch(std::unique_lock<std::mutex>& lock)
{
    m_HasDeputy = true;
    std::uint64_t handled = m_Handled, current = 0;
    for (int idle = 0; !isWanted();) {
        if (idle < kTicksToSleep) {
            m_ForDeputy.wait_for(lock, kTick);
        } else {
            m_DeputySleeps = true;
            if (m_Handled == handled)
                m_ForDeputy.wait(lock);
            m_DeputySleeps = false;
        }
        const std::uint64_t handledBefore = std::exchange(handled, m_Handled);
        std::uint64_t currentBefore = std::exchange(current, m_Current);
        idle = handled == handledBefore ? idle + 1 : 0;
        // Whether the leader has been at it for a tick, and still is.
        if (current != 0 && current == currentBefore && !isWanted() &&
            m_Current.compare_exchange_strong(currentBefore, 0)) {
            m_Waiting.began(m_CurrentLane);
            ++m_Term;
            m_IsLed = false;
        }
    }
    m_HasDeputy = false;
    callOther(); // may watch
}

} // namespace wirecall
