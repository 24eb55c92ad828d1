#include "components/bulkhaul/files/Chunks.h"

#if defined(__x86_64__)
#include <xxh_x86dispatch.h> // the same functions, for the processor's widest vectors
#else
#include <xxhash.h>
#endif

#include <cstring>
#include <memory>
#include <new>

namespace bulkhaul {

static_assert(sizeof(Digest) == sizeof(XXH128_canonical_t));

namespace {

Digest canonicalOf(XXH128_hash_t hash)
{
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, hash);
    Digest digest;
    std::memcpy(digest.data(), canonical.digest, digest.size());
    return digest;
}

} // namespace

std::size_t sizeOf(const Pieces& pieces)
{
    std::size_t size = 0;
    for (const iovec& piece : pieces)
        size += piece.iov_len;
    return size;
}

Digest digestOf(const void* data, std::size_t size)
{
    return canonicalOf(XXH3_128bits(data, size));
}

Digest digestOf(const Pieces& pieces)
{
    const std::unique_ptr<XXH3_state_t, XXH_errorcode (*)(XXH3_state_t*)> state(XXH3_createState(),
                                                                                &XXH3_freeState);
    if (!state)
        throw std::bad_alloc();
    XXH3_128bits_reset(state.get());
    for (const iovec& piece : pieces)
        XXH3_128bits_update(state.get(), piece.iov_base, piece.iov_len);
    return canonicalOf(XXH3_128bits_digest(state.get()));
}

Digest digestOf(const std::vector<Digest>& chunks)
{
    return digestOf(chunks.data(), chunks.size() * sizeof(Digest));
}

void ChunkDigests::set(std::uint64_t chunk, const Digest& digest)
{
    std::vector<std::optional<Digest>>& block = m_Blocks[chunk / kBlock];
    block.resize(kBlock);
    std::optional<Digest>& known = block[chunk % kBlock];
    m_Known += known ? 0 : 1;
    known = digest;
}

std::optional<Digest> ChunkDigests::find(std::uint64_t chunk) const
{
    const auto block = m_Blocks.find(chunk / kBlock);
    return block == m_Blocks.end() ? std::nullopt : block->second[chunk % kBlock];
}

std::optional<Digest> ChunkDigests::whole(std::uint64_t chunks) const
{
    if (m_Known < chunks)
        return std::nullopt;
    std::vector<Digest> all;
    all.reserve(chunks);
    for (std::uint64_t chunk = 0; chunk < chunks; ++chunk) {
        const std::optional<Digest> digest = find(chunk);
        if (!digest)
            return std::nullopt;
        all.push_back(*digest);
    }
    return digestOf(all);
}

void ChunkDigests::clear()
{
    m_Blocks.clear();
    m_Known = 0;
}

std::string toBytes(const Digest& digest)
{
    return std::string(digest.data(), digest.size());
}

std::string toHex(const Digest& digest)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string hex;
    for (const char byte : digest) {
        const auto value = static_cast<unsigned char>(byte);
        hex += {kDigits[value >> 4], kDigits[value & 15]};
    }
    return hex;
}

bool isDigest(const std::string& bytes, const Digest& digest)
{
    return bytes.size() == digest.size() && std::memcmp(bytes.data(), digest.data(), digest.size()) == 0;
}

} // namespace bulkhaul
