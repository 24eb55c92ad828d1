#include "components/bulkhaul/Transfer.h"

#include "components/bulkhaul/Parallel.h"

#include <algorithm>
#include <mutex>
#include <numeric>

namespace bulkhaul {

namespace {

/// So many digests are asked for at once: the box reads that much before it answers.
constexpr std::uint32_t kChunksInQuestion = 64;

} // namespace

std::vector<std::uint64_t> allChunks(std::uint64_t count)
{
    std::vector<std::uint64_t> chunks(count);
    std::iota(chunks.begin(), chunks.end(), 0);
    return chunks;
}

std::vector<std::uint64_t> differingChunks(const Comparison& comparison, std::uint64_t all, int threads)
{
    std::mutex mutex;
    std::vector<std::uint64_t> differing;
    const std::uint64_t questions = (comparison.chunks + kChunksInQuestion - 1) / kChunksInQuestion;
    inParallel(threads, questions, [&](std::uint64_t question) {
        const std::uint64_t first = question * kChunksInQuestion;
        const auto count =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(kChunksInQuestion, comparison.chunks - first));
        const std::vector<Digest> theirs = comparison.theirs(first, count);
        for (std::uint32_t i = 0; i < count; ++i) {
            const Digest ours = comparison.ours(first + i);
            if (ours == theirs[i]) {
                comparison.same(first + i, ours);
                continue;
            }
            const std::lock_guard<std::mutex> lock(mutex);
            differing.push_back(first + i);
        }
    });
    std::sort(differing.begin(), differing.end());
    for (std::uint64_t chunk = comparison.chunks; chunk < all; ++chunk)
        differing.push_back(chunk);
    return differing;
}

} // namespace bulkhaul
