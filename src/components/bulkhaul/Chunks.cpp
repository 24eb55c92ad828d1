#include "components/bulkhaul/Chunks.h"

#include <xxhash.h>

#include <cstring>

namespace bulkhaul {

static_assert(sizeof(Digest) == sizeof(XXH128_canonical_t));

Digest digestOf(const void* data, std::size_t size)
{
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits(data, size));
    Digest digest;
    std::memcpy(digest.data(), canonical.digest, digest.size());
    return digest;
}

Digest digestOf(const std::vector<Digest>& chunks)
{
    return digestOf(chunks.data(), chunks.size() * sizeof(Digest));
}

std::string toBytes(const Digest& digest)
{
    return std::string(digest.data(), digest.size());
}

bool isDigest(const std::string& bytes, const Digest& digest)
{
    return bytes.size() == digest.size() && std::memcmp(bytes.data(), digest.data(), digest.size()) == 0;
}

} // namespace bulkhaul
