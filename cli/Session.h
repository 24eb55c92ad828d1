#ifndef LUMO_CLI_SESSION_H
#define LUMO_CLI_SESSION_H

#include "cli/Catalogue.h"
#include "cli/Journal.h"

namespace cli {

/// What a command works with once it is connected.
struct Session
{
    CLumoDataMgr& manager;
    Catalogue& catalogue;
    Journal& journal;
    bool json;
};

} // namespace cli

#endif
