#ifndef LUMO_COMPONENTS_HUBLINE_HUBLINE_H
#define LUMO_COMPONENTS_HUBLINE_HUBLINE_H

#include "lumo/components/platform/Export.h"

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include <string>

namespace wirecall {
class RpcChannel;
}

/// The channel client: opens, shares and releases channels to the centre and to storage boxes.
/// All functions are safe from any thread.
namespace hubline {

/// The codes of StartHubline and NewChannel.
enum Code
{
    kOpened = 0,
    kNotStarted = 1,        ///< StartHubline was not called
    kCurrentConnection = 2, ///< the address is that of the current connection; nothing was opened
    kNoConnection = 3,      ///< nobody answers there in time, or does not speak this protocol
    kTokenRefused = 4,      ///< the other side does not accept the token
    kInsecure = 5           ///< a token would travel in plain text to another host: refused here
};

enum class Security
{
    Automatic, ///< plain text on loopback, TLS to any other host
    Tls,       ///< TLS, on loopback too
    PlainText  ///< plain text, to another host too, but never with a token
};

struct Options
{
    std::string address;                     ///< of the centre, "host:port"
    std::string token;                       ///< of the user
    Security security = Security::Automatic; ///< for all channels of the client
    std::string rootCertificate;             ///< PEM file of the authority to trust; empty: the system's
    long long timeout = 10000;               ///< of a hello, in milliseconds; 0 or less: no limit
};

/// Starts the client and opens the current connection. `reason` says in words what a code other than
/// kOpened means; the client is then not started. Starting again replaces the current connection.
LUMO_EXPORT Code StartHubline(const Options& options, std::string& reason);

/// Closes the current connection and forgets all channels; those still held stay usable.
LUMO_EXPORT void StopHubline();

/// Opens a channel of its own to `address`, or shares the one that is open there with the same token,
/// and says hello. The pointer is empty unless `code` is kOpened.
LUMO_EXPORT boost::shared_ptr<wirecall::RpcChannel> NewChannel(const std::string& address,
                                                               const std::string& token, int& code);

/// The current connection; empty when the client is not started.
LUMO_EXPORT boost::shared_ptr<wirecall::RpcChannel> GetCurrentChannelExt();

/// Gives up one channel that NewChannel opened to `address`, whatever its token. Does nothing for an address
/// that has none, the current connection's among them.
LUMO_EXPORT void ReleaseChannel(const std::string& address);

/// Whether `address` ("host:port") names this machine: localhost, 127.0.0.0/8, ::1.
LUMO_EXPORT bool isLoopback(const std::string& address);

/// The process-wide sink of status lines; standard error is spared, so nothing is shown until the
/// application asks. Never destroyed; safe from any thread. The application's function may be called until
/// the process has ended, also by a thread of a component; lines that it writes itself are dropped, and so
/// is what it throws.
class LUMO_EXPORT Logger
{
public:
    typedef boost::function<void(int level, const std::string& text)> Callback;

    /// The one logger. `create` false gives null while nobody has created it.
    static Logger* Instance(bool create);
    void log(int level, const std::string& text);
    /// Who gets the lines from now on; an empty function discards them.
    void toCallback(const Callback& callback);

private:
    Logger();
    ~Logger() = delete;

    struct State;
    State* m_State;
};

} // namespace hubline

#endif
