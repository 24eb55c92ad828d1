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
    kNoConnection = 3,      ///< nothing answers there in time, or it does not speak this protocol
    kTokenRefused = 4,      ///< the other side does not accept the token, or the token can't be sent
    kInsecure = 5           ///< of StartHubline: a token would travel in plain text to another host
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
    std::string token;                       ///< of the user; empty: none is sent
    Security security = Security::Automatic; ///< for all channels of the client
    std::string rootCertificate;             ///< PEM file of the authority to trust; empty: the system's
    long long timeout = 10000;               ///< of a hello, in milliseconds; 0 or less: no limit
};

/// Starts the client and opens the current connection. `reason` says in words what a code other than
/// kOpened means; the client is then not started. Starting again replaces the current connection.
///
/// The token is checked before anything else. One that has blanks, line ends, control characters or
/// characters that are not ASCII, or more than 7168 bytes, gives kTokenRefused, also for an address where
/// nothing listens. A well-formed token gives kNoConnection there.
LUMO_EXPORT Code StartHubline(const Options& options, std::string& reason);

/// Closes the current connection and forgets all channels. A channel whose pointer is still held stays
/// usable.
LUMO_EXPORT void StopHubline();

/// Opens a channel of its own to `address`, or shares the one that is open there with the same token,
/// and says hello. The pointer is empty unless `code` is kOpened; the reason then goes to the Logger, unless
/// the code is kNotStarted or kCurrentConnection. Those two come first, then the token is checked as by
/// StartHubline. A token that would travel in plain text to another host gives kNoConnection.
///
/// Addresses are compared as texts: "localhost:7001" and "127.0.0.1:7001" are two addresses, so that a
/// channel to the one is opened although the current connection is to the other.
LUMO_EXPORT boost::shared_ptr<wirecall::RpcChannel> NewChannel(const std::string& address,
                                                               const std::string& token, int& code);

/// The current connection; empty when the client is not started.
LUMO_EXPORT boost::shared_ptr<wirecall::RpcChannel> GetCurrentChannelExt();

/// Gives up one channel that NewChannel opened to `address`: of those with different tokens the one that was
/// opened first. Does nothing for an address that has none, or that of the current connection.
LUMO_EXPORT void ReleaseChannel(const std::string& address);

/// Whether `address` ("host:port") names this machine: localhost, 127.0.0.0/8, ::1.
LUMO_EXPORT bool isLoopback(const std::string& address);

/// The process-wide sink of status lines. Lines are discarded until the application sets a function; nothing
/// goes to standard error. Never destroyed; safe from any thread. The application's function may be called
/// until the process has ended, also by a thread of a component. Lines that it writes itself are dropped, and
/// so is what it throws.
class LUMO_EXPORT Logger
{
public:
    typedef boost::function<void(int level, const std::string& text)> Callback;

    /// Returns the only logger; with `create` false null if nothing has created it yet.
    static Logger* Instance(bool create);
    void log(int level, const std::string& text);
    /// Sends the lines to `callback` from now on; an empty function discards them.
    void toCallback(const Callback& callback);

private:
    Logger();
    ~Logger() = delete;

    struct State;
    State* m_State;
};

} // namespace hubline

#endif
