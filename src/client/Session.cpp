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
    m_Link->close();
}

Catalogue Session::catalogue() const
{
    return Catalogue(m_Link);
}

} // namespace lumo
