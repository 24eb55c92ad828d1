#ifndef LUMO_CENTRE_LEDGEROPERATIONS_H
#define LUMO_CENTRE_LEDGEROPERATIONS_H

#include "centre/Query.h"

#include <vector>

namespace centre {

/// The operations of ledgerserver.LedgerServices, in the order of the service.
const std::vector<Operation>& ledgerOperations();

} // namespace centre

#endif
