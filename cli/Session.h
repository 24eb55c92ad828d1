#ifndef LUMO_CLI_SESSION_H
#define LUMO_CLI_SESSION_H

#include "cli/Catalogue.h"
#include "cli/Journal.h"

#include <functional>

namespace cli {

/// What a command works with once it is connected.
struct Session
{
    CLumoDataMgr& manager;
    Catalogue& catalogue;
    Journal& journal;
    bool json;
};

/// A command with all that it was given: prints to standard output, as text or as JSON; throws Failure.
using Action = std::function<void(Session&)>;

} // namespace cli

#endif
