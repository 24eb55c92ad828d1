#ifndef LUMO_WIRECALL_MEMBEREVENT_H
#define LUMO_WIRECALL_MEMBEREVENT_H

#include "components/wirecall/ServerThreads.h"

#include <cstddef>

namespace wirecall {

/// Passes one kind of event of a call to a member function, which runs a method if it may take long.
template <class Owner>
class MemberEvent final : public Event
{
public:
    MemberEvent(Owner& owner, void (Owner::*step)(bool), bool (Owner::*takesLong)() const = nullptr)
        : m_Owner(owner), m_Step(step), m_TakesLong(takesLong)
    {
    }
    void happened(bool ok) override { (m_Owner.*m_Step)(ok); }
    bool mayTakeLong() const override { return m_TakesLong != nullptr && (m_Owner.*m_TakesLong)(); }
    std::size_t lane() const override { return m_TakesLong != nullptr ? m_Owner.lane() : 0; }

private:
    Owner& m_Owner;
    void (Owner::*m_Step)(bool);
    bool (Owner::*m_TakesLong)() const;
};

} // namespace wirecall

#endif
