#ifndef LUMO_BULKHAUL_CHUNKS_H
#define LUMO_BULKHAUL_CHUNKS_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace bulkhaul {

/// A file is moved and verified in chunks of this size, in bytes; the last one is shorter.
constexpr std::size_t kChunkSize = std::size_t(1) << 20;

/// What the other side may declare at most, in bytes.
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

/// The digests of those chunks of a file that are known. Memory grows with what is known, not with the file.
class ChunkDigests
{
public:
    void set(std::uint64_t chunk, const Digest& digest);
    std::optional<Digest> find(std::uint64_t chunk) const;
    /// The digest of a whole file of so many chunks, if all are known.
    std::optional<Digest> whole(std::uint64_t chunks) const;
    std::uint64_t known() const { return m_Known; }
    void clear();

private:
    static constexpr std::uint64_t kBlock = 1024;

    std::unordered_map<std::uint64_t, std::vector<std::optional<Digest>>> m_Blocks;
    std::uint64_t m_Known = 0;
};

std::string toBytes(const Digest& digest);
/// Whether `bytes` are that digest.
bool isDigest(const std::string& bytes, const Digest& digest);

} // namespace bulkhaul

#endif
