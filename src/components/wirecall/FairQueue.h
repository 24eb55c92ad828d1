#ifndef LUMO_WIRECALL_FAIRQUEUE_H
#define LUMO_WIRECALL_FAIRQUEUE_H

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <deque>
#include <unordered_map>
#include <utility>

namespace wirecall {

/// Items that wait for threads, each in the lane of its user: the lanes have turns, and of one lane only so
/// many items run at once. Lane 0 has no bound. For one thread at a time, but for `anyFull`.
template <class Item>
class FairQueue
{
public:
    /// `most` items of one lane run at once.
    explicit FairQueue(std::size_t most) : m_Most(most) {}

    /// How many items wait.
    std::size_t size() const { return m_Size; }
    /// Whether an item waits that may run now.
    bool hasNext() const { return !m_Turns.empty(); }
    /// Whether a lane has as many items running as it may. Safe from any thread.
    bool anyFull() const { return m_Full > 0; }

    void push(std::size_t lane, Item item)
    {
        Lane& its = m_Lanes[lane];
        its.waiting.push_back(std::move(item));
        ++m_Size;
        if (its.waiting.size() == 1 && !isFull(lane, its))
            m_Turns.push_back(lane);
    }

    /// Takes the item whose turn it is, which runs from now on; to be called if hasNext().
    std::pair<std::size_t, Item> next()
    {
        const std::size_t lane = m_Turns.front();
        m_Turns.pop_front();
        Lane& its = m_Lanes[lane];
        Item item = std::move(its.waiting.front());
        its.waiting.pop_front();
        --m_Size;
        add(lane, its);
        if (!its.waiting.empty() && !isFull(lane, its))
            m_Turns.push_back(lane);
        return {lane, std::move(item)};
    }

    /// Counts an item that is to run without having waited. Returns false, and counts nothing, if none may or
    /// others of its lane wait.
    bool begin(std::size_t lane)
    {
        Lane& its = m_Lanes[lane];
        if (isFull(lane, its) || !its.waiting.empty())
            return false;
        add(lane, its);
        return true;
    }

    /// Counts an item that runs already.
    void began(std::size_t lane)
    {
        Lane& its = m_Lanes[lane];
        add(lane, its);
        if (isFull(lane, its))
            m_Turns.erase(std::remove(m_Turns.begin(), m_Turns.end(), lane), m_Turns.end());
    }

    /// An item that was counted has run.
    void end(std::size_t lane)
    {
        const auto found = m_Lanes.find(lane);
        Lane& its = found->second;
        const bool wasFull = isFull(lane, its);
        --its.running;
        if (wasFull && !isFull(lane, its)) {
            --m_Full;
            if (!its.waiting.empty())
                m_Turns.push_back(lane);
        }
        if (its.running == 0 && its.waiting.empty())
            m_Lanes.erase(found);
    }

private:
    struct Lane
    {
        std::deque<Item> waiting;
        std::size_t running = 0;
    };

    bool isFull(std::size_t lane, const Lane& its) const { return lane != 0 && its.running >= m_Most; }

    void add(std::size_t lane, Lane& its)
    {
        if (++its.running == m_Most && lane != 0)
            ++m_Full;
    }

    const std::size_t m_Most;
    std::unordered_map<std::size_t, Lane> m_Lanes;
    std::deque<std::size_t> m_Turns; ///< the lanes with an item that may run, each once
    std::size_t m_Size = 0;
    std::atomic<std::size_t> m_Full{0}; ///< lanes
};

} // namespace wirecall

#endif
