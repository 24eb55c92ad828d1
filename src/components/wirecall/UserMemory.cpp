#include "components/wirecall/UserMemory.h"

namespace wirecall {

bool UserMemory::take(const std::string& token, std::size_t bytes, std::size_t most)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto held = m_Held.find(token);
    if (held == m_Held.end())
        m_Held.emplace(token, bytes);
    else if (held->second + bytes > most)
        return false;
    else
        held->second += bytes;
    return true;
}

void UserMemory::give(const std::string& token, std::size_t bytes)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto held = m_Held.find(token);
    if (held != m_Held.end() && (held->second -= bytes) == 0)
        m_Held.erase(held);
}

} // namespace wirecall
