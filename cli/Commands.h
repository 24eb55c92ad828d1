#ifndef LUMO_CLI_COMMANDS_H
#define LUMO_CLI_COMMANDS_H

#include "cli/Catalogue.h"

namespace cli {

/// One command: prints to standard output, as a table or as JSON; throws Failure.

void listDisks(Catalogue& catalogue, bool json);
void listPlace(Catalogue& catalogue, const Place& place, bool json);
/// `depth` is the number of levels below the place.
void showTree(Catalogue& catalogue, const Place& place, unsigned int depth, bool json);
void showRecord(Catalogue& catalogue, const Place& place, bool json);

} // namespace cli

#endif
