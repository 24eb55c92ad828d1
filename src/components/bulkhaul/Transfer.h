#ifndef LUMO_BULKHAUL_TRANSFER_H
#define LUMO_BULKHAUL_TRANSFER_H

#include "components/bulkhaul/BoxClient.h"
#include "components/bulkhaul/Progress.h"
#include "components/bulkhaul/files/IncomingFile.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bulkhaul {

/// What a transfer counts. Safe from several threads.
struct Tally
{
    std::atomic<std::uint64_t> filesKept{0};
    std::atomic<std::uint64_t> bytesMoved{0}; ///< of file content, verified
};

/// One call of Download or Upload.
struct Transfer
{
    BoxClient& box;
    Progress& progress;
    Tally& tally;
    int chunksInFlight;
    int filesInFlight;
    Existing existing;
    bool sourceIsFile; ///< the caller knows it
};

/// How many large files of a folder move at once. Each has chunks in memory.
inline int largeFilesInFlight(const Transfer& transfer)
{
    constexpr int kMost = 2;
    return std::min(kMost, transfer.filesInFlight);
}

/// How long a download waits for another one that writes to its target: as long as that one gets on.
inline Waiting waitingOf(const Transfer& transfer)
{
    return {std::chrono::milliseconds(transfer.box.stallLimit()), true};
}

/// The stall limit of transfers that begin now, in milliseconds.
long long stallLimit();

/// Both throw TransferFailure or FileFailure.
void download(const Transfer& transfer, const std::string& boxPath, const std::string& localPath);
void upload(const Transfer& transfer, const std::string& boxPath, const std::string& localPath);

/// The weight of a file in the progress, so that an empty one counts, too.
inline std::uint64_t weightOf(std::uint64_t size)
{
    return size + 1;
}

/// The limits of a batch of small files, which is one request. A single file may have more bytes.
constexpr std::size_t kFilesInBatch = 64;
constexpr std::uint64_t kBytesInBatch = kChunkSize;

/// Compares the chunks of this side with those of the other.
struct Comparison
{
    std::uint64_t chunks; ///< how many chunks to compare, from chunk 0
    std::function<std::vector<Digest>(std::uint64_t first, std::uint32_t count)> theirs;
    std::function<Digest(std::uint64_t chunk)> ours;
    std::function<void(std::uint64_t chunk, const Digest& digest)> same; ///< called for each equal chunk
};

/// Returns, for each of `all` chunks, whether it has to move: it differs, or was not compared.
std::vector<bool> differingChunks(const Comparison& comparison, std::uint64_t all, int threads);

/// Into how many streams at once, and into runs of how many chunks, a large file is divided. What gRPC lets a
/// stream send ahead is hardly more than a chunk, and each stream takes a round trip to begin; so one stream
/// would be idle most of a long way.
struct Division
{
    int streams;
    std::uint32_t longestRun;
};
constexpr Division kNear{1, 1024}; // the most chunks that a box moves in one stream
constexpr Division kFar{4, 32};

/// Chunks that are missing here and there are short runs, each of which takes a round trip; so they are moved
/// as if the box were far away.
Division divisionFor(const BoxClient& box, const std::vector<bool>& missing);

/// Calls `move` for each run of chunks that are marked, from the first on, on as many threads as streams.
void forEachRun(const std::vector<bool>& chunks, const Division& division,
                const std::function<void(std::uint64_t first, std::uint32_t count)>& move);

inline bool isAny(const std::vector<bool>& chunks)
{
    return std::find(chunks.begin(), chunks.end(), true) != chunks.end();
}

} // namespace bulkhaul

#endif
