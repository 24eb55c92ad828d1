#ifndef LUMO_CLIENT_LINK_H
#define LUMO_CLIENT_LINK_H

#include "client/Log.h"
#include "lumo/client/Error.h"
#include "lumo/client/Session.h"
#include "lumo/core/LumoDataTypes.h"

#include <boost/shared_ptr.hpp>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

class CLumoDataMgr;

namespace wirecall {
class RpcChannel;
}

namespace lumo::internal {

/// The process's connection to a centre: open while the session, a call or a transfer needs it.
class Connection
{
public:
    /// Throws Error, as Session does.
    explicit Connection(const Session::Settings& settings);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    CLumoDataMgr& manager() const;
    const std::string& token() const { return m_Token; }

private:
    /// The one that there may be; gives the process free last of all.
    struct Turn
    {
        Turn();
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
    };
    /// The log and the channel client, which end even when logging in fails.
    struct Components
    {
        explicit Components(const Session::Settings& settings);
        ~Components();
        Components(const Components&) = delete;
        Components& operator=(const Components&) = delete;
    };

    void open(const Session::Settings& settings, const std::string& token);
    void logIn(const Session::Settings& settings, const std::string& token);

    Turn m_Turn;
    Components m_Components;
    const std::string m_Token;
    boost::shared_ptr<wirecall::RpcChannel> m_Channel;
};

class TransferState;

/// What the handles of a session share: the connection, until the session closes.
class Link
{
public:
    explicit Link(const Session::Settings& settings);

    /// The connection, which lasts as long as the pointer; throws Error (Closed).
    std::shared_ptr<Connection> use() const;
    /// Drops the observers of its transfers, too. A second call waits for the first, unless an observer makes
    /// it: the first waits for that.
    void close();
    void watch(const std::shared_ptr<TransferState>& transfer);

private:
    mutable std::mutex m_Mutex;
    std::vector<std::weak_ptr<TransferState>> m_Transfers;
    std::shared_ptr<Connection> m_Connection;
    bool m_Closed = false;
    std::condition_variable m_WasClosed;
};

/// One call of the manager, or a few that succeed or fail together: keeps the connection, and knows why it
/// failed.
class Call
{
public:
    explicit Call(const Link& link);

    CLumoDataMgr& manager() const;
    CLumoDataMgr* operator->() const { return &manager(); }
    const std::shared_ptr<Connection>& connection() const { return m_Connection; }

    /// Whether there is something; throws for a failed call.
    bool answered(ENUM_RET_TYPE result) const;
    /// Throws Error (NoAnswer or Refused) for the call that has just failed.
    [[noreturn]] void fail() const;
    void require(bool done) const;
    /// Throws unless a list that comes in pages is whole: a page that the centre has not is no empty list.
    void requireWhole(ENUM_RET_TYPE result) const;

    /// Why it failed; Kind::None when nothing did.
    static Reason reason() { return Log::instance().lastReason(); }
    /// Whether the centre's answer was its general error without a reason, which some operations give for
    /// what isn't there.
    static bool refused()
    {
        const Reason last = reason();
        return last.kind == Reason::Kind::ErrorResult && last.text.empty();
    }

private:
    std::shared_ptr<Connection> m_Connection;
};

/// Why this thread's last call failed, as an Error whose text begins with `message`.
Error requestError(const std::string& message = "the centre failed the request");

[[noreturn]] void refuse(const std::string& message);
[[noreturn]] void notFound(const std::string& message);

} // namespace lumo::internal

#endif
