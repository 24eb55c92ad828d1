#include "core/CallFrame.h"

#include "core/LogLine.h"
#include "core/NoteFailure.h"

namespace {

using Kind = lumo::LastFailure::Kind;

Kind kindOf(wirecall::Failure failure)
{
    switch (failure) {
    case wirecall::Failure::NoConnection:
        return Kind::NoConnection;
    case wirecall::Failure::TimeLimit:
        return Kind::TimeLimit;
    case wirecall::Failure::Unauthenticated:
        return Kind::TokenRefused;
    case wirecall::Failure::NotImplemented:
        return Kind::NotImplemented;
    default:
        return Kind::CallFailed;
    }
}

} // namespace

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

bool CallFrame::ended(const char* operation)
{
    if (!m_Controller.Failed())
        return true;
    const std::string text = m_Controller.ErrorText();
    lumo::noteFailure(kindOf(m_Controller.failure()), operation, 0, text);
    LUMO_LOG(m_Function.c_str(), "%s Error : %s", operation, text.c_str());
    writeLeave();
    return false;
}

ENUM_RET_TYPE CallFrame::judge(const char* operation, Judgement judgement, int result)
{
    const bool isNull = judgement == Judgement::Null;
    if (judgement != Judgement::Success)
        lumo::noteFailure(isNull ? Kind::NothingFound : Kind::Refused, operation, result,
                          m_Controller.reason());
    switch (judgement) {
    case Judgement::Success:
        return RET_SUCCESS;
    case Judgement::Error:
        LUMO_LOG(m_Function.c_str(), "%s Result Error", operation);
        break;
    case Judgement::TerseError:
        LUMO_LOG(m_Function.c_str(), "%s Error", operation);
        break;
    case Judgement::Null:
        LUMO_LOG(m_Function.c_str(), "%s Result NULL", operation);
        break;
    }
    writeLeave();
    return isNull ? RET_NULL : RET_FAILED;
}

void CallFrame::writeLeave()
{
    LUMO_LOG(m_Function.c_str(), "Leave Function : %s", m_LoggedName);
}
