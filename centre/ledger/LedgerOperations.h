#ifndef LUMO_CENTRE_LEDGER_LEDGEROPERATIONS_H
#define LUMO_CENTRE_LEDGER_LEDGEROPERATIONS_H

#include "centre/store/Query.h"

#include <string>
#include <vector>

namespace centre {

/// The operations of ledgerserver.LedgerServices that read; Changes.h has the others.
const std::vector<Operation>& ledgerOperations();

/// How the query of a total begins.
inline const std::string kCount = "SELECT count(*) AS total ";

/// What cuts the request's page from a list that an index holds in its order. A caller that asks for more
/// than the limit gets less than it asked for, and goes on from there.
std::string pageLimit();

} // namespace centre

#endif
