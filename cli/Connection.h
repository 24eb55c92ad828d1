#ifndef LUMO_CLI_CONNECTION_H
#define LUMO_CLI_CONNECTION_H

#include "cli/Journal.h"
#include "cli/Options.h"

#include <boost/shared_ptr.hpp>

namespace wirecall {
class RpcChannel;
}

class CLumoDataMgr;

namespace cli {

/// What the library told of a failed call, as part of a message.
std::string describe(const Reason& reason);

/// Throws Failure (CentreFailed) for the last failed call of this thread, with its reason.
[[noreturn]] void requestFailed(const Journal& journal);

/// The connection to the centre, as the user of the options; open from construction to destruction.
class Connection
{
public:
    /// Throws Failure when the options don't suffice, the centre is not reached or refuses the token, or
    /// company or user are unknown.
    Connection(const Options& options, Journal& journal);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    CLumoDataMgr& manager() const;

private:
    void open(const Options& options, const std::string& token, unsigned int timeout);
    void logIn(const Options& options, const std::string& token, unsigned int timeout, Journal& journal);

    /// Stops the channel client, also when logging in fails.
    struct Client
    {
        ~Client();
    };

    Client m_Client;
    boost::shared_ptr<wirecall::RpcChannel> m_Channel;
};

} // namespace cli

#endif
