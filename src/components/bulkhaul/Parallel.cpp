#include "components/bulkhaul/Parallel.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>

namespace bulkhaul {

namespace {

class Run
{
public:
    explicit Run(const std::vector<Lane>& lanes) : m_Lanes(lanes), m_Next(lanes.size()) {}

    void work(std::size_t lane)
    {
        try {
            for (std::uint64_t i = m_Next[lane]++; i < m_Lanes[lane].count && !m_Failed; i = m_Next[lane]++)
                m_Lanes[lane].work(i);
        } catch (...) {
            const std::lock_guard<std::mutex> lock(m_Mutex);
            if (!m_Failed.exchange(true))
                m_First = std::current_exception();
        }
    }

    /// Starts all threads but one of the first lane, which is the caller. Returns false if some are missing.
    bool start(std::vector<std::thread>& threads)
    try {
        for (std::size_t lane = 0; lane < m_Lanes.size(); ++lane) {
            const auto most = static_cast<std::uint64_t>(m_Lanes[lane].threads);
            std::uint64_t wanted = std::min(most, m_Lanes[lane].count);
            wanted -= lane == 0 && wanted > 0 ? 1 : 0;
            for (std::uint64_t i = 0; i < wanted; ++i)
                threads.emplace_back([this, lane] { work(lane); });
        }
        return true;
    } catch (const std::system_error&) {
        return false;
    }

    void rethrow() const
    {
        if (m_First)
            std::rethrow_exception(m_First);
    }

private:
    const std::vector<Lane>& m_Lanes;
    std::vector<std::atomic<std::uint64_t>> m_Next;
    std::atomic<bool> m_Failed{false};
    std::mutex m_Mutex;
    std::exception_ptr m_First;
};

} // namespace

void inParallel(const std::vector<Lane>& lanes)
{
    Run run(lanes);
    std::vector<std::thread> others;
    const bool complete = run.start(others);
    run.work(0);
    for (std::size_t lane = 1; lane < lanes.size() && !complete; ++lane)
        run.work(lane); // fewer threads do the same work
    for (std::thread& other : others)
        other.join();
    run.rethrow();
}

} // namespace bulkhaul
