#ifndef LUMO_BULKHAUL_FILES_CHUNKS_H
#define LUMO_BULKHAUL_FILES_CHUNKS_H

#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace bulkhaul {

/// The size of the chunks in which a file is moved and verified, in bytes. The last chunk is shorter.
constexpr std::size_t kChunkSize = std::size_t(1) << 20;

/// The largest file that the other side may declare, in bytes.
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

/// Bytes in memory, in pieces.
typedef std::vector<iovec> Pieces;

inline Pieces piecesOf(const std::string& data)
{
    return {{const_cast<char*>(data.data()), data.size()}};
}
std::size_t sizeOf(const Pieces& pieces);

Digest digestOf(const void* data, std::size_t size);
Digest digestOf(const Pieces& pieces);
inline Digest digestOf(const std::string& data)
{
    return digestOf(data.data(), data.size());
}
/// The digest of a whole file: the digest of its chunks' digests, one after the other.
Digest digestOf(const std::vector<Digest>& chunks);

/// The known digests of a file's chunks. Memory grows with the number of known ones, not with the file.
class ChunkDigests
{
public:
    void set(std::uint64_t chunk, const Digest& digest);
    std::optional<Digest> find(std::uint64_t chunk) const;
    /// Returns the digest of a whole file of `chunks` chunks, if all are known.
    std::optional<Digest> whole(std::uint64_t chunks) const;
    std::uint64_t known() const { return m_Known; }
    void clear();

private:
    static constexpr std::uint64_t kBlock = 1024;

    std::unordered_map<std::uint64_t, std::vector<std::optional<Digest>>> m_Blocks;
    std::uint64_t m_Known = 0;
};

std::string toBytes(const Digest& digest);
/// Returns the bytes as 32 hexadecimal digits in lower case.
std::string toHex(const Digest& digest);
/// Whether `bytes` are the bytes of `digest`.
bool isDigest(const std::string& bytes, const Digest& digest);

} // namespace bulkhaul

#endif
