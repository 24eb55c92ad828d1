#include "client/boxes/BoxAccess.h"

#include "lumo/components/hubline/Hubline.h"
#include "lumo/core/LumoDataMgr.h"

namespace lumo::internal {

BoxAccess::BoxAccess(const Call& call, const std::string& address, FolderId folder)
    : m_Connection(call.connection()), m_Address(address)
{
    int code = 0;
    m_Channel = hubline::NewChannel(address, m_Connection->token(), code);
    if (code == hubline::kCurrentConnection)
        m_Channel = hubline::GetCurrentChannelExt();
    if (!m_Channel)
        throw requestError("the storage box at " + address + " is not reached");
    const std::string user = call->roleName().toStdString();
    m_ToRead.set_data_class(0);
    m_ToRead.set_user_name(user);
    m_ToWrite.set_data_class(0);
    m_ToWrite.set_user_name(user);
    m_ToWrite.set_auth_flag(true);
    m_ToWrite.set_auth_mode(1);
    if (folder.isSet())
        m_ToWrite.set_folder_id(folder.number());
}

BoxAccess::~BoxAccess()
{
    m_Channel.reset();
    hubline::ReleaseChannel(m_Address);
}

} // namespace lumo::internal
