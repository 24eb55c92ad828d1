#include "centre/box/DigestCache.h"

namespace centre {

namespace {

constexpr std::uint64_t kMostChunks = std::uint64_t(1024) * 1024; // of 1 TiB: some 20 MB

} // namespace

void DigestCache::add(const std::string& key, std::uint64_t chunk, const bulkhaul::Digest& digest)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    auto found = m_ByKey.find(key);
    if (found == m_ByKey.end()) {
        m_Files.push_front({key, {}});
        found = m_ByKey.emplace(key, m_Files.begin()).first;
    } else {
        m_Files.splice(m_Files.begin(), m_Files, found->second);
    }
    bulkhaul::ChunkDigests& chunks = found->second->chunks;
    m_Chunks -= chunks.known();
    chunks.set(chunk, digest);
    m_Chunks += chunks.known();
    while (m_Chunks > kMostChunks && m_Files.size() > 1) {
        m_Chunks -= m_Files.back().chunks.known();
        m_ByKey.erase(m_Files.back().key);
        m_Files.pop_back();
    }
}

std::optional<bulkhaul::Digest> DigestCache::find(const std::string& key, std::uint64_t chunk)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto found = m_ByKey.find(key);
    return found == m_ByKey.end() ? std::nullopt : found->second->chunks.find(chunk);
}

} // namespace centre
