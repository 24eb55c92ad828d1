#ifndef LUMO_WIRECALL_SERVERTHREADS_H
#define LUMO_WIRECALL_SERVERTHREADS_H

#include "components/wirecall/FairQueue.h"

#include <grpcpp/completion_queue.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace wirecall {

/// An event on the completion queue that a step of a call waits for.
class Event
{
public:
    virtual ~Event() = default;
    virtual void happened(bool ok) = 0;
    /// Whether what follows may take long, or others wait meanwhile.
    virtual bool mayTakeLong() const = 0;
    /// A number for the user for whom a method may run, so that the users have turns; 0 if none will.
    virtual std::size_t lane() const = 0;
};

/// The threads of a server. One of them, the leader, waits for events; more would wake each other. It handles
/// quick ones itself and gives the lead away before others, so that pings and further calls never wait. If a
/// quick one takes long after all, the deputy notices within two ticks and takes the lead. Without a thread
/// that could be leader or deputy the leader handles nothing itself; events wait, and the users have turns.
/// The events of one user do not take all threads.
class ServerThreads
{
public:
    static constexpr int kLeast = 2;

    /// Starts threads, which handle the events of `queue`: as many as `ofUser` events of each user at once
    /// need, with some more for other users, or as many as the system has.
    ServerThreads(grpc::ServerCompletionQueue& queue, int ofUser);
    /// Waits until the queue, which must be shut down before, is empty.
    ~ServerThreads();

    /// Whether there are as many as events need.
    bool areEnough() const { return m_Threads.size() >= kLeast; }
    /// The number of events that wait for a thread.
    std::size_t waiting() const;

private:
    void run();
    void lead(std::unique_lock<std::mutex>& lock);
    void handle(Event& event, bool ok);
    void watch(std::unique_lock<std::mutex>& lock);
    void rest(std::unique_lock<std::mutex>& lock);
    bool isWanted() const { return m_AtEnd || !m_IsLed || m_Waiting.hasNext(); }
    bool giveLeadAway(std::size_t lane);
    void callDeputy();
    void callOther();

    grpc::ServerCompletionQueue& m_Queue;
    std::vector<std::thread> m_Threads;

    std::atomic<std::uint64_t> m_Term{0};    ///< changes when the leader does
    std::atomic<std::uint64_t> m_Handled{0}; ///< how many events the leaders began to handle themselves
    std::atomic<std::uint64_t> m_Current{0}; ///< the number of the one that is being handled; 0: none
    std::atomic<std::size_t> m_CurrentLane{0};
    std::atomic<int> m_Free{0}; ///< threads that neither lead nor work
    std::atomic<bool> m_DeputySleeps{false};

    mutable std::mutex m_Mutex; ///< guards what follows
    std::condition_variable m_ForDeputy;
    std::vector<std::condition_variable*> m_Resting; ///< of the others, the one that worked last at the end
    bool m_HasDeputy = false;
    bool m_IsLed = false;
    bool m_AtEnd = false;
    FairQueue<std::pair<Event*, bool>> m_Waiting;
};

} // namespace wirecall

#endif
