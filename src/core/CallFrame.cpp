#include "core/CallFrame.h"

#include "core/LogLine.h"

CallFrame::CallFrame(const CLumoDataMgr& manager, const char* method) : CallFrame(manager, method, method)
{
}

CallFrame::CallFrame(const CLumoDataMgr& manager, const char* method, const char* loggedName)
    : CallFrame(manager, method, loggedName, manager.m_ForgeChannel, manager.m_Timeout)
{
}

CallFrame::CallFrame(const CLumoDataMgr& manager, const char* method, const char* loggedName,
                     wirecall::RpcChannel* forgeChannel, unsigned int timeout)
    : m_Function(std::string("CLumoDataMgr::") + method),
      m_LoggedName(loggedName),
      m_Timeout(timeout),
      m_LedgerChannel(manager.m_LedgerChannel),
      m_ForgeChannel(forgeChannel)
{
    LUMO_LOG(m_Function.c_str(), "Enter Function : %s", m_LoggedName);
}

void CallFrame::write(const char* message)
{
    LUMO_LOG(m_Function.c_str(), "%s", message);
}

bool CallFrame::failed(const char* operation)
{
    LUMO_LOG(m_Function.c_str(), "%s Error : %s", operation, m_Controller.ErrorText().c_str());
    return leave(false);
}

ENUM_RET_TYPE CallFrame::refused(const char* operation)
{
    LUMO_LOG(m_Function.c_str(), "%s Result Error", operation);
    return leave(RET_FAILED);
}

bool CallFrame::refusedTersely(const char* operation)
{
    LUMO_LOG(m_Function.c_str(), "%s Error", operation);
    return leave(false);
}

ENUM_RET_TYPE CallFrame::judge(const char* operation, int result)
{
    if (result == -2)
        return refused(operation);
    if (result == -1) {
        LUMO_LOG(m_Function.c_str(), "%s Result NULL", operation);
        return leave(RET_NULL);
    }
    return RET_SUCCESS;
}

void CallFrame::writeLeave()
{
    LUMO_LOG(m_Function.c_str(), "Leave Function : %s", m_LoggedName);
}
