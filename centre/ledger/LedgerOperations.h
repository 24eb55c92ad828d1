#ifndef LUMO_CENTRE_LEDGER_LEDGEROPERATIONS_H
#define LUMO_CENTRE_LEDGER_LEDGEROPERATIONS_H

#include "centre/store/Query.h"

#include <string>
#include <vector>

namespace centre {

/// The operations of ledgerserver.LedgerServices that read; Changes.h has the others.
std::vector<Operation> ledgerOperations(const Dialect& dialect);

/// The start of the query of a total.
inline const std::string kCount = "SELECT count(*) AS total ";

/// Returns the SQL that selects the request's page from a list in the order of an index. A caller that asks
/// for more records than the limit gets fewer and continues from there.
std::string pageLimit();

} // namespace centre

#endif
