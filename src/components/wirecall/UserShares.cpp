#include "components/wirecall/UserShares.h"

namespace wirecall {

bool UserShares::take(const std::string& user, std::size_t amount, std::size_t most)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    std::size_t& held = m_Held[user];
    if (held > 0 && held + amount > most)
        return false;
    held += amount;
    return true;
}

void UserShares::give(const std::string& user, std::size_t amount)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto held = m_Held.find(user);
    if (held != m_Held.end() && (held->second -= amount) == 0)
        m_Held.erase(held);
}

} // namespace wirecall
