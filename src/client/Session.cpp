#include "lumo/client/Session.h"

#include "client/Link.h"

namespace lumo {

Error::~Error() = default;

Session::Session(const Settings& settings) : m_Link(std::make_shared<internal::Link>(settings))
{
}

Session::~Session()
{
    close();
}

void Session::close()
{
    // Another thread may destroy the session when an observer closes it here.
    const std::shared_ptr<internal::Link> link = m_Link;
    link->close();
}

Catalogue Session::catalogue() const
{
    return Catalogue(m_Link);
}

Images Session::images() const
{
    return Images(m_Link);
}

Comments Session::comments() const
{
    return {m_Link, Comments::Table::Comments};
}

Comments Session::marks() const
{
    return {m_Link, Comments::Table::Marks};
}

Centre Session::centre() const
{
    return Centre(m_Link);
}

Transfers Session::transfers() const
{
    return Transfers(m_Link);
}

} // namespace lumo
