#ifndef LUMO_BULKHAUL_PARALLEL_H
#define LUMO_BULKHAUL_PARALLEL_H

#include <cstdint>
#include <functional>

namespace bulkhaul {

/// Calls `work` with 0, 1, ... count - 1, on up to `threads` threads at once, the caller's among them. After
/// an exception it starts no more calls, waits for those that run, and throws the first exception.
void inParallel(int threads, std::uint64_t count, const std::function<void(std::uint64_t)>& work);

} // namespace bulkhaul

#endif
