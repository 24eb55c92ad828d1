#ifndef LUMO_CLIENT_SESSION_H
#define LUMO_CLIENT_SESSION_H

#include "lumo/client/BoxPlace.h"
#include "lumo/client/Catalogue.h"
#include "lumo/client/Centre.h"
#include "lumo/client/Comments.h"
#include "lumo/client/Error.h"
#include "lumo/client/Images.h"
#include "lumo/client/Transfers.h"
#include "lumo/components/platform/Export.h"

#include <functional>
#include <memory>
#include <string>

namespace lumo {

namespace internal {
class Link;
}

/// The connection to a centre as a user of a company, and the way to all else of this layer. There is one at
/// a time in a process: the library below has one connection, one log and one code page.
///
/// Members may be used from any thread but for the constructor and the destructor, which belong to one.
/// Closing does not wait for the centre. Calls of other threads that are under way go to their end; later
/// ones throw Error (Closed). Transfers that run go to their end too, but nobody hears of them; the process
/// waits for them when it ends. While they last, no new session can be opened.
class LUMO_EXPORT Session
{
public:
    /// What a session needs. Only the address, the user and the company have to be given.
    struct LUMO_EXPORT Settings
    {
        std::string centre;           ///< "host:port"
        std::string user;             ///< user name
        std::string company;          ///< company number
        std::string token;            ///< of the user; empty: the one in tokenFile
        std::string tokenFile;        ///< a file whose one line is the token; empty: no token
        unsigned int timeout = 10000; ///< of each call, in milliseconds; 0: no limit
        bool tls = false;             ///< TLS to this machine too; another host always gets it
        bool plainText = false;       ///< plain text to another host too, but never with a token
        std::string tlsCa;            ///< PEM file of the authority to trust; empty: the system's
        /// The code page of the library's records, "utf8" or "gbk"; what it lacks becomes "?".
        std::string codePage = "utf8";
        /// Receives the log of the library, an entry with its line ends each, on the thread that logs, one at
        /// a time, until the session has closed. It must not throw, log or close the session.
        std::function<void(const std::string&)> log;

        /// Settings from the environment (LUMO_CENTRE, LUMO_USER, LUMO_COMPANY, LUMO_TOKEN_FILE,
        /// LUMO_TIMEOUT, LUMO_TLS_CA, LUMO_TLS, LUMO_PLAIN_TEXT, LUMO_CODE_PAGE) and, where that has none,
        /// from a profile: lines such as "centre = localhost:7400". Without `profile` the file is
        /// LUMO_PROFILE or, where it exists, ~/.config/lumo/profile.ini. Lines for other programs are
        /// skipped. Throws Error (WrongUse).
        static Settings load(const std::string& profile = {});
        /// ~/.config/lumo/profile.ini, or in $XDG_CONFIG_HOME; empty when there is no such file.
        static std::string defaultProfile();
        /// Milliseconds of a text such as "500ms", "10s", "2m" or "0"; throws Error (WrongUse).
        static unsigned int milliseconds(const std::string& text);
    };

    /// Connects and logs in. Throws Error: WrongUse for settings that don't suffice, Busy when there is a
    /// session, NotReached, TokenRefused, UnknownCompany, UnknownUser, NoAnswer or Refused.
    ///
    /// From now on the process has the session's code page, UTF-8 for C strings and local names, and the log
    /// goes to Settings::log. A log that the application had directed elsewhere comes back with CLumoLogger.
    explicit Session(const Settings& settings);
    /// Closes, as close() does.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Closes; from any thread, and again. When it returns, no observer of a transfer runs or will run, and
    /// Settings::log neither: it waits for those that do, and for another thread that is closing. An observer
    /// may close: only its own call goes on then. While another thread is closing, which waits for the
    /// observer, it returns at once.
    void close();

    Catalogue catalogue() const;
    Images images() const;
    Comments comments() const;
    Comments marks() const;
    Centre centre() const;
    Transfers transfers() const;

private:
    std::shared_ptr<internal::Link> m_Link;
};

} // namespace lumo

#endif
