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

} // namespace wirecall

#endif
