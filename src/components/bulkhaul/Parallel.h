#ifndef LUMO_BULKHAUL_PARALLEL_H
#define LUMO_BULKHAUL_PARALLEL_H

#include <cstdint>
#include <functional>
#include <vector>

namespace bulkhaul {

/// Calls of one kind: `work` with 0, 1, ... count - 1, on up to `threads` threads at once.
struct Lane
{
    int threads;
    std::uint64_t count;
    std::function<void(std::uint64_t)> work;
};

/// Makes the calls of all lanes at once, the caller's thread among the threads. After an exception it starts
/// no more calls, waits for those that run, and throws the first exception.
void inParallel(const std::vector<Lane>& lanes);

inline void inParallel(int threads, std::uint64_t count, const std::function<void(std::uint64_t)>& work)
{
    inParallel({{threads, count, work}});
}

} // namespace bulkhaul

#endif
