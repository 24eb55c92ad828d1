#ifndef LUMO_BULKHAUL_TRANSFER_H
#define LUMO_BULKHAUL_TRANSFER_H

#include "components/bulkhaul/BoxClient.h"
#include "components/bulkhaul/IncomingFile.h"
#include "components/bulkhaul/Progress.h"

#include <algorithm>
#include <atomic>
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

/// Both throw TransferFailure or FileFailure.
void download(const Transfer& transfer, const std::string& boxPath, const std::string& localPath);
void upload(const Transfer& transfer, const std::string& boxPath, const std::string& localPath);

/// What a file counts for in the progress; an empty one counts, too.
inline std::uint64_t weightOf(std::uint64_t size)
{
    return size + 1;
}

/// Small files go in batches, one request each, of at most so many files, and so many bytes unless it is one
/// file.
constexpr std::size_t kFilesInBatch = 64;
constexpr std::uint64_t kBytesInBatch = kChunkSize;

/// Finds out which chunks one side has already that the other has, too.
struct Comparison
{
    std::uint64_t chunks; ///< compared are the chunks from 0 on below this
    std::function<std::vector<Digest>(std::uint64_t first, std::uint32_t count)> theirs;
    std::function<Digest(std::uint64_t chunk)> ours;
    std::function<void(std::uint64_t chunk, const Digest& digest)> same; ///< told of each that is equal
};

/// Of `all` chunks those that have to move: those that differ, and those from `comparison.chunks` on.
std::vector<bool> differingChunks(const Comparison& comparison, std::uint64_t all, int threads);

inline bool isAny(const std::vector<bool>& chunks)
{
    return std::find(chunks.begin(), chunks.end(), true) != chunks.end();
}

} // namespace bulkhaul

#endif
