#ifndef LUMO_BULKHAUL_CHUNKS_H
#define LUMO_BULKHAUL_CHUNKS_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace bulkhaul {

/// A file is moved and verified in chunks of this size, in bytes; the last one is shorter.
constexpr std::size_t kChunkSize = 1024 * 1024;

/// What the other side may declare at most, in bytes: it costs memory to keep the digests of the chunks.
constexpr std::uint64_t kLargestFile = std::uint64_t(1) << 44;

inline std::uint64_t chunkCount(std::uint64_t fileSize)
{
    return (fileSize + kChunkSize - 1) / kChunkSize;
}

inline std::size_t chunkLength(std::uint64_t fileSize, std::uint64_t chunk)
{
    return static_cast<std::size_t>(std::min<std::uint64_t>(kChunkSize, fileSize - chunk * kChunkSize));
}

/// XXH3-128 in its canonical form: most significant byte first.
typedef std::array<char, 16> Digest;

Digest digestOf(const void* data, std::size_t size);
inline Digest digestOf(const std::string& data)
{
    return digestOf(data.data(), data.size());
}
/// The digest of a whole file: that of its chunks' digests, one behind the other.
Digest digestOf(const std::vector<Digest>& chunks);

std::string toBytes(const Digest& digest);
/// Whether `bytes` are that digest.
bool isDigest(const std::string& bytes, const Digest& digest);

} // namespace bulkhaul

#endif
