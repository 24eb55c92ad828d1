#include "components/bulkhaul/Parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace bulkhaul {

void inParallel(int threads, std::uint64_t count, const std::function<void(std::uint64_t)>& work)
{
    std::atomic<std::uint64_t> next{0};
    std::atomic<bool> failed{false};
    std::mutex mutex;
    std::exception_ptr first;
    const auto run = [&] {
        try {
            for (std::uint64_t i = next++; i < count && !failed; i = next++)
                work(i);
        } catch (...) {
            const std::lock_guard<std::mutex> lock(mutex);
            if (!failed.exchange(true))
                first = std::current_exception();
        }
    };
    std::vector<std::thread> others;
    const std::uint64_t wanted = std::min<std::uint64_t>(static_cast<std::uint64_t>(threads), count);
    others.reserve(wanted);
    try {
        while (others.size() + 1 < wanted)
            others.emplace_back(run);
    } catch (const std::system_error&) {
        // Fewer threads do the same work.
    }
    run();
    for (std::thread& other : others)
        other.join();
    if (first)
        std::rethrow_exception(first);
}

} // namespace bulkhaul
