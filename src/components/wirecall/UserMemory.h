#ifndef LUMO_WIRECALL_USERMEMORY_H
#define LUMO_WIRECALL_USERMEMORY_H

#include <cstddef>
#include <mutex>
#include <string>
#include <unordered_map>

namespace wirecall {

/// The memory that the calls of each user of a server hold: requests until they are answered, answers until
/// they are sent. Safe from any thread.
class UserMemory
{
public:
    /// Counts `bytes` more for the user with that token. Returns false, and counts nothing, if the user would
    /// hold more than `most`; but one call alone may.
    bool take(const std::string& token, std::size_t bytes, std::size_t most);
    void give(const std::string& token, std::size_t bytes);

private:
    std::mutex m_Mutex;
    std::unordered_map<std::string, std::size_t> m_Held; ///< by token
};

} // namespace wirecall

#endif
