#ifndef LUMO_WIRECALL_USERSHARES_H
#define LUMO_WIRECALL_USERSHARES_H

#include "lumo/components/platform/Export.h"

#include <cstddef>
#include <mutex>
#include <string>
#include <unordered_map>

namespace wirecall {

/// How much of something the calls of each user of a server hold: bytes, or calls under way. Safe from any
/// thread.
class LUMO_EXPORT UserShares
{
public:
    /// Counts `amount` more for a user. Returns false, and counts nothing, if the user would hold more than
    /// `most`; but one call alone may.
    bool take(const std::string& user, std::size_t amount, std::size_t most);
    void give(const std::string& user, std::size_t amount);

private:
    std::mutex m_Mutex;
    std::unordered_map<std::string, std::size_t> m_Held; ///< by user
};

/// What one call holds of its user's shares, until it is destroyed. For one thread at a time.
class HeldShare
{
public:
    /// `shares` and `user`, which must not change after the first `take`, must outlive the object.
    HeldShare(UserShares& shares, const std::string& user) : m_Shares(shares), m_User(user) {}
    ~HeldShare()
    {
        if (m_Amount > 0)
            m_Shares.give(m_User, m_Amount);
    }

    HeldShare(const HeldShare&) = delete;
    HeldShare& operator=(const HeldShare&) = delete;

    /// As UserShares::take.
    bool take(std::size_t amount, std::size_t most)
    {
        const bool taken = m_Shares.take(m_User, amount, most);
        m_Amount += taken ? amount : 0;
        return taken;
    }

private:
    UserShares& m_Shares;
    const std::string& m_User;
    std::size_t m_Amount = 0;
};

} // namespace wirecall

#endif
