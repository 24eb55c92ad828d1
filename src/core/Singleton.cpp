#include "lumo/core/LumoDataMgr.h"

#include "core/OutstandingCall.h"

#include <QTextCodec>

namespace {

// Makes Qt's codecs before m_FreeSingleTon, so that they outlive the tasks that its destructor waits for:
// without them local file names would lose all characters beyond Latin-1.
[[maybe_unused]] const QTextCodec* const codecsFirst = QTextCodec::codecForName("UTF-8");

} // namespace

// Defined in this order, so that the mutex outlives the object that frees the singleton.
std::mutex CLumoDataMgr::m_SafeMutex;
std::atomic<CLumoDataMgr*> CLumoDataMgr::m_Instance{nullptr};
CLumoDataMgr::CLumoFreeSelf CLumoDataMgr::m_FreeSingleTon;

CLumoDataMgr& CLumoDataMgr::GetSingleTon()
{
    return *GetSinglePton();
}

CLumoDataMgr* CLumoDataMgr::GetSinglePton()
{
    if (CLumoDataMgr* instance = m_Instance)
        return instance;
    _Thread_Safe_Lock();
    if (m_Instance == nullptr)
        m_Instance = new CLumoDataMgr;
    CLumoDataMgr* const instance = m_Instance;
    _Thread_Safe_UnLock();
    return instance;
}

void CLumoDataMgr::_Thread_Safe_Lock()
{
    m_SafeMutex.lock();
}

void CLumoDataMgr::_Thread_Safe_UnLock()
{
    m_SafeMutex.unlock();
}

CLumoDataMgr::CLumoFreeSelf::~CLumoFreeSelf()
{
    if (!OutstandingCall::endAll()) {
        m_Instance.load()->endTransfers();
        return; // an answer may still come to the object
    }
    delete m_Instance.load(); // a task that the destructor waits for still asks for the object
    m_Instance = nullptr;
}
