#include "lumo/core/LumoDataMgr.h"

#include "core/CallFrame.h"
#include "core/LogLine.h"
#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/components/hubline/Hubline.h"
#include "lumo/components/wirecall/RpcChannel.h"
#include "lumo/core/CStringCodec.h"
#include "lumo/core/Identifier.h"

#include <boost/bind.hpp>

namespace {

constexpr unsigned int kDefaultTimeout = 10000;
constexpr int kChunksInFlight = 5;
constexpr int kFilesInFlight = 5;

/// Hands the status lines of the bulk transfer client to the channel client's logger.
void transferClientStatus(int level, const std::string& text)
{
    hubline::Logger::Instance(true)->log(level, text);
}

} // namespace

// Singleton and start-up

CLumoDataMgr::CLumoDataMgr()
    : QObject(nullptr),
      m_Timeout(kDefaultTimeout),
      m_LedgerChannel(nullptr),
      m_ForgeChannel(nullptr),
      m_RoleID(kNoIdentifier),
      m_CompanyID(kNoIdentifier),
      m_ThreadPool(nullptr),
      m_PathConvert(false)
{
    m_PathConvert = pathConvertParam();
}

CLumoDataMgr::~CLumoDataMgr()
{
    endTransfers();
}

void CLumoDataMgr::endTransfers()
{
    bulkhaul::EndBulkhaul();
    // Running tasks read fields that are declared after the pool, so its own destructor waits too late.
    m_ThreadPool.waitForDone();
}

ENUM_INIT_ERROR_CODE CLumoDataMgr::initDataMgr(wirecall::RpcChannel* ledgerChannel,
                                               wirecall::RpcChannel* forgeChannel, const char* token,
                                               const char* roleName, const char* companyNo,
                                               unsigned int timeout)
{
    static const char function[] = "CLumoDataMgr::initDataMgr";
    const auto failed = [](ENUM_INIT_ERROR_CODE code) {
        LUMO_LOG(function, "CLumoDataMgr::initDataMgrByChannel Failed");
        return code;
    };

    if (ledgerChannel == nullptr || forgeChannel == nullptr) {
        LUMO_LOG(function, "wirecall::RpcChannel is NULL");
        return failed(INIT_ERROR_CHANNEL_NULL);
    }
    m_LedgerChannel = ledgerChannel;
    m_ForgeChannel = forgeChannel;
    m_CompanyNo = CLumoCStringCodec::fromAscii(companyNo);
    m_RoleName = CLumoCStringCodec::fromAscii(roleName);
    m_Token = token;
    m_Timeout = timeout;

    const boost::function<void(int, const std::string&)> status = boost::bind(&transferClientStatus, _1, _2);
    if (!bulkhaul::StartBulkhaul(kChunksInFlight, kFilesInFlight, status)) {
        LUMO_LOG(function, "bulkhaul::StartBulkhaul Failed");
        return failed(INIT_ERROR_TRANSFER_CLIENT);
    }
    m_CompanyID = getCompanyID(m_CompanyNo);
    if (m_CompanyID == kNoIdentifier)
        return failed(INIT_ERROR_COMPANY);
    m_RoleID = getRoleID(m_RoleName);
    if (m_RoleID == kNoIdentifier)
        return failed(INIT_ERROR_ROLE);
    LUMO_LOG(function, "CLumoDataMgr::initDataMgrByChannel Successed");
    return INIT_SUCCESS;
}

unsigned int CLumoDataMgr::companyID() const
{
    return m_CompanyID;
}

QString CLumoDataMgr::roleName() const
{
    return m_RoleName;
}

boost::shared_ptr<wirecall::RpcChannel> CLumoDataMgr::newChannel(const QString& address)
{
    static const char function[] = "CLumoDataMgr::newChannel";
    int code = 0;
    boost::shared_ptr<wirecall::RpcChannel> channel =
        hubline::NewChannel(CLumoCStringCodec::toStdString(address), m_Token, code);
    switch (code) {
    case 0:
        LUMO_LOG(function, "hubline::NewChannel Successed!");
        break;
    case 1:
        LUMO_LOG(function, "Not Call StartHubline Server!");
        break;
    case 2:
        LUMO_LOG(function, "Address is same to StartHubline!");
        channel = hubline::GetCurrentChannelExt();
        break;
    case 3:
        LUMO_LOG(function, "Connect Server Failed!");
        break;
    case 4:
        LUMO_LOG(function, "Token Authentication Failure!");
        break;
    default:
        LUMO_LOG(function, "hubline::NewChannel Unknown Error!");
        break;
    }
    return channel;
}

// Start-up lookups

unsigned int CLumoDataMgr::getCompanyID(const QString& companyNo)
{
    CallFrame frame(*this, "getCompanyID");
    ledgerserver::CompanyUtilBeanReq request;
    request.set_companyno(companyNo.toUtf8().constData());
    unsigned int id = kNoIdentifier;
    frame.ask(LUMO_LEDGER(queryCompanyTableByCompanyNo), request, verdicts::found, readers::beanId(id));
    return id;
}

unsigned int CLumoDataMgr::getRoleID(const QString& roleName)
{
    CallFrame frame(*this, "getRoleID", "getRole");
    ledgerserver::UserUtilBeanReq request;
    request.set_username(roleName.toUtf8().constData());
    unsigned int id = kNoIdentifier;
    frame.ask(LUMO_LEDGER(queryUserTableByUserName), request, verdicts::found, readers::beanId(id));
    return id;
}
