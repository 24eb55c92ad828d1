#include "components/bulkhaul/Transfer.h"

#include "components/bulkhaul/Parallel.h"

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <utility>

namespace bulkhaul {

namespace {

/// The number of digests in one request. The box reads that many chunks before it answers.
constexpr std::uint32_t kChunksInQuestion = 64;

} // namespace

std::vector<bool> differingChunks(const Comparison& comparison, std::uint64_t all, int threads)
{
    std::mutex mutex;
    std::vector<bool> differing(all, true);
    const std::uint64_t questions = (comparison.chunks + kChunksInQuestion - 1) / kChunksInQuestion;
    inParallel(threads, questions, [&](std::uint64_t question) {
        const std::uint64_t first = question * kChunksInQuestion;
        const auto count =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(kChunksInQuestion, comparison.chunks - first));
        const std::vector<Digest> theirs = comparison.theirs(first, count);
        for (std::uint32_t i = 0; i < count; ++i) {
            const Digest ours = comparison.ours(first + i);
            if (ours != theirs[i])
                continue;
            comparison.same(first + i, ours);
            const std::lock_guard<std::mutex> lock(mutex);
            differing[first + i] = false;
        }
    });
    return differing;
}

Division divisionFor(const BoxClient& box, const std::vector<bool>& missing)
{
    std::size_t chunks = 0;
    std::size_t runs = 0;
    for (std::size_t i = 0; i < missing.size(); ++i) {
        chunks += missing[i] ? 1 : 0;
        runs += missing[i] && (i == 0 || !missing[i - 1]) ? 1 : 0;
    }
    const bool isFragmented = runs > 1 && chunks / runs < kFar.longestRun;
    return box.isFar() || isFragmented ? kFar : kNear;
}

void forEachRun(const std::vector<bool>& chunks, const Division& division,
                const std::function<void(std::uint64_t first, std::uint32_t count)>& move)
{
    std::vector<std::pair<std::uint64_t, std::uint32_t>> runs;
    for (std::uint64_t first = 0; first < chunks.size();) {
        std::uint32_t count = 0;
        while (first + count < chunks.size() && chunks[first + count] && count < division.longestRun)
            ++count;
        if (count > 0)
            runs.emplace_back(first, count);
        first += std::max(1U, count);
    }
    inParallel(division.streams, runs.size(),
               [&](std::uint64_t run) { move(runs[run].first, runs[run].second); });
}

} // namespace bulkhaul
