#ifndef LUMO_CENTRE_BOX_HANDLES_H
#define LUMO_CENTRE_BOX_HANDLES_H

#include "centre/base/Token.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace centre {

/// Objects of users, each named by a handle that needs its user's token. An object ends when nobody has used
/// it for ten minutes, or as the one that is idle for longest when a user has too many. An object is in use
/// while anyone else has a pointer to it. Not safe from several threads.
template <class Object>
class Handles
{
public:
    typedef std::shared_ptr<Object> Pointer;
    typedef std::vector<Pointer> Ended; ///< the caller gives them up without its lock

    /// `most` objects of one user.
    explicit Handles(std::size_t most) : m_Most(most) {}

    /// Returns the new handle of an object.
    std::string add(const std::string& token, Pointer object, Ended& ended)
    {
        endIdle(ended);
        endSurplus(token, ended);
        std::string handle = newToken();
        m_Kept[handle] = {token, std::move(object), Clock::now()};
        return handle;
    }

    /// Returns null unless the handle is one of that user. Counts as a use.
    Pointer find(const std::string& handle, const std::string& token)
    {
        const auto found = m_Kept.find(handle);
        if (found == m_Kept.end() || found->second.token != token)
            return nullptr;
        found->second.lastUse = Clock::now();
        return found->second.object;
    }

    /// Ends what has been idle for too long, and returns how many are left.
    std::size_t count(Ended& ended)
    {
        endIdle(ended);
        return m_Kept.size();
    }

    void erase(const std::string& handle) { m_Kept.erase(handle); }

    /// Calls `visit(object)` for each.
    template <class Visit>
    void forEach(Visit visit) const
    {
        for (const auto& [handle, kept] : m_Kept)
            visit(*kept.object);
    }

    /// Ends each object for which `ends(object, idle)` is true. `idle` is how long it has not been used.
    template <class Ends>
    void endIf(Ends ends, Ended& ended)
    {
        for (auto each = m_Kept.begin(); each != m_Kept.end();) {
            const auto next = std::next(each);
            if (ends(*each->second.object, idle(each->second)))
                end(each, ended);
            each = next;
        }
    }

private:
    typedef std::chrono::steady_clock Clock;

    struct Kept
    {
        std::string token;
        Pointer object;
        Clock::time_point lastUse;
    };
    typedef std::map<std::string, Kept> ByHandle;

    static constexpr std::chrono::minutes kLongestPause{10};

    static Clock::duration idle(const Kept& kept)
    {
        return kept.object.use_count() > 1 ? Clock::duration::zero() : Clock::now() - kept.lastUse;
    }

    void end(typename ByHandle::iterator kept, Ended& ended)
    {
        ended.push_back(std::move(kept->second.object));
        m_Kept.erase(kept);
    }

    void endIdle(Ended& ended)
    {
        endIf([](const Object&, Clock::duration idle) { return idle > kLongestPause; }, ended);
    }

    void endSurplus(const std::string& token, Ended& ended)
    {
        auto longest = m_Kept.end();
        std::size_t count = 0;
        for (auto each = m_Kept.begin(); each != m_Kept.end(); ++each) {
            if (each->second.token != token)
                continue;
            ++count;
            if (longest == m_Kept.end() || idle(each->second) > idle(longest->second))
                longest = each;
        }
        if (count >= m_Most)
            end(longest, ended);
    }

    const std::size_t m_Most;
    ByHandle m_Kept;
};

} // namespace centre

#endif
