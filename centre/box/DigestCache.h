#ifndef LUMO_CENTRE_BOX_DIGESTCACHE_H
#define LUMO_CENTRE_BOX_DIGESTCACHE_H

#include "components/bulkhaul/files/Chunks.h"

#include <cstdint>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace centre {

/// Keeps the digests of chunks that were served lately, so that the digest of a whole file needs no second
/// read. A file's key changes with its content. Safe from any thread.
class DigestCache
{
public:
    void add(const std::string& key, std::uint64_t chunk, const bulkhaul::Digest& digest);
    std::optional<bulkhaul::Digest> find(const std::string& key, std::uint64_t chunk);

private:
    struct File
    {
        std::string key;
        bulkhaul::ChunkDigests chunks;
    };

    std::mutex m_Mutex;
    std::list<File> m_Files; ///< the one used last first
    std::unordered_map<std::string, std::list<File>::iterator> m_ByKey;
    std::uint64_t m_Chunks = 0; ///< of all files
};

} // namespace centre

#endif
