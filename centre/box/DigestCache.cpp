#include "centre/box/DigestCache.h"

namespace centre {

namespace {

constexpr std::size_t kFiles = 64;

} // namespace

void DigestCache::add(const std::string& key, std::uint64_t chunks, std::uint64_t chunk,
                      const bulkhaul::Digest& digest)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    auto found = m_ByKey.find(key);
    if (found == m_ByKey.end()) {
        m_Files.push_front({key, {}});
        m_Files.front().chunks.resize(chunks);
        found = m_ByKey.emplace(key, m_Files.begin()).first;
    } else {
        m_Files.splice(m_Files.begin(), m_Files, found->second);
    }
    found->second->chunks.at(chunk) = digest;
    if (m_Files.size() > kFiles) {
        m_ByKey.erase(m_Files.back().key);
        m_Files.pop_back();
    }
}

std::optional<bulkhaul::Digest> DigestCache::find(const std::string& key, std::uint64_t chunk)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto found = m_ByKey.find(key);
    return found == m_ByKey.end() ? std::nullopt : found->second->chunks.at(chunk);
}

} // namespace centre
