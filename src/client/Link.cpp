#include "client/Link.h"

#include "client/Settings.h"
#include "client/TransferEnds.h"
#include "client/TransferState.h"
#include "lumo/components/hubline/Hubline.h"
#include "lumo/components/platform/CodePage.h"
#include "lumo/core/CStringCodec.h"
#include "lumo/core/LumoDataMgr.h"

#include <QTextCodec>

#include <algorithm>
#include <atomic>

namespace lumo::internal {

namespace {

std::atomic<bool> taken{false};

Error::Kind kindOf(hubline::Code code)
{
    switch (code) {
    case hubline::kNoConnection:
        return Error::Kind::NotReached;
    case hubline::kTokenRefused:
    case hubline::kInsecure:
        return Error::Kind::TokenRefused;
    default:
        return Error::Kind::Other;
    }
}

hubline::Security securityOf(const Session::Settings& settings)
{
    if (settings.tls || !settings.tlsCa.empty())
        return hubline::Security::Tls;
    return settings.plainText ? hubline::Security::PlainText : hubline::Security::Automatic;
}

} // namespace

Error requestError(const std::string& message)
{
    const Reason reason = Log::instance().lastReason();
    const Error::Kind kind =
        reason.kind == Reason::Kind::CallFailed ? Error::Kind::NoAnswer : Error::Kind::Refused;
    return {kind, message + ": " + describe(reason), reason.operation, describe(reason)};
}

void refuse(const std::string& message)
{
    throw Error(Error::Kind::WrongUse, message);
}

void notFound(const std::string& message)
{
    throw Error(Error::Kind::NotFound, message);
}

Connection::Turn::Turn()
{
    if (taken.exchange(true)) {
        throw Error(Error::Kind::Busy, "a session is open already, or transfers of an earlier one still run: "
                                       "a process has one connection at a time");
    }
}

Connection::Turn::~Turn()
{
    taken = false;
}

Connection::Components::Components(const Session::Settings& settings)
{
    platform::setSystemCodePage(settings.codePage == "gbk" ? platform::kGbkCodePage
                                                           : platform::kUtf8CodePage);
    // What goes in is UTF-8, whatever the records are in.
    CLumoCStringCodec::setCodec(QTextCodec::codecForName("UTF-8"));
    // Names of local files are UTF-8 too, even where the locale says nothing.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    Log::instance().open(settings.log);
    TransferEnds::instance().open();
}

Connection::Components::~Components()
{
    hubline::StopHubline();
    TransferEnds::instance().close();
    Log::instance().close();
}

Connection::Connection(const Session::Settings& settings) : m_Components(settings), m_Token(tokenOf(settings))
{
    open(settings, m_Token);
    logIn(settings, m_Token);
}

CLumoDataMgr& Connection::manager() const
{
    return CLumoDataMgr::GetSingleTon();
}

void Connection::open(const Session::Settings& settings, const std::string& token)
{
    hubline::Options options;
    options.address = settings.centre;
    options.token = token;
    options.security = securityOf(settings);
    options.rootCertificate = settings.tlsCa;
    options.timeout = settings.timeout;
    std::string reason;
    const hubline::Code code = hubline::StartHubline(options, reason);
    if (code != hubline::kOpened) {
        throw Error(kindOf(code),
                    code == hubline::kNoConnection ? "can't reach the centre: " + reason : reason, {},
                    reason);
    }
    m_Channel = hubline::GetCurrentChannelExt();
}

void Connection::logIn(const Session::Settings& settings, const std::string& token)
{
    const ENUM_INIT_ERROR_CODE code =
        manager().initDataMgr(m_Channel.get(), m_Channel.get(), token.c_str(), settings.user.c_str(),
                              settings.company.c_str(), settings.timeout);
    if (code == INIT_SUCCESS)
        return;
    if (code != INIT_ERROR_COMPANY && code != INIT_ERROR_ROLE)
        throw Error(Error::Kind::Other, "the library did not start (code " + std::to_string(code) + ")");
    // The library returns the same for a time-out and an unknown name; its log has the difference.
    if (Log::instance().lastReason().kind != Reason::Kind::NullResult)
        throw requestError("the centre failed to log you in");
    if (code == INIT_ERROR_COMPANY)
        throw Error(Error::Kind::UnknownCompany, "the centre knows no company '" + settings.company + "'");
    throw Error(Error::Kind::UnknownUser, "the centre knows no user '" + settings.user + "'");
}

Link::Link(const Session::Settings& settings)
{
    checkSettings(settings);
    m_Connection = std::make_shared<Connection>(settings);
}

std::shared_ptr<Connection> Link::use() const
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (!m_Connection)
        throw Error(Error::Kind::Closed, "the session is closed");
    return m_Connection;
}

void Link::close()
{
    std::shared_ptr<Connection> connection;
    std::vector<std::weak_ptr<TransferState>> transfers;
    {
        std::unique_lock<std::mutex> lock(m_Mutex);
        connection.swap(m_Connection);
        transfers.swap(m_Transfers);
        if (!connection) {
            if (!TransferState::isObserving())
                m_WasClosed.wait(lock, [this] { return m_Closed; });
            return;
        }
    }
    for (const auto& watched : transfers)
        if (const auto transfer = watched.lock())
            transfer->detach();
    Log::instance().dropSink();
    connection.reset();
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Closed = true;
    m_WasClosed.notify_all();
}

void Link::watch(const std::shared_ptr<TransferState>& transfer)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto gone = [](const auto& watched) { return watched.expired(); };
    m_Transfers.erase(std::remove_if(m_Transfers.begin(), m_Transfers.end(), gone), m_Transfers.end());
    if (m_Connection)
        m_Transfers.push_back(transfer);
    else
        transfer->detach();
}

Call::Call(const Link& link) : m_Connection(link.use())
{
    Log::instance().forget();
}

CLumoDataMgr& Call::manager() const
{
    return m_Connection->manager();
}

bool Call::answered(ENUM_RET_TYPE result) const
{
    if (result == RET_FAILED)
        fail();
    return result != RET_NULL;
}

void Call::fail() const
{
    throw requestError();
}

void Call::require(bool done) const
{
    if (!done)
        fail();
}

void Call::requireWhole(ENUM_RET_TYPE result) const
{
    if (answered(result))
        return;
    const std::string operation = reason().operation;
    throw Error(Error::Kind::Refused, operation + ": a page of the list is missing", operation,
                "a page of the list is missing");
}

} // namespace lumo::internal
