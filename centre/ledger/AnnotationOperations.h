#ifndef LUMO_CENTRE_LEDGER_ANNOTATIONOPERATIONS_H
#define LUMO_CENTRE_LEDGER_ANNOTATIONOPERATIONS_H

#include "centre/store/Query.h"

#include <vector>

namespace centre {

/// The queries of links, comments and image comments; Changes.h has what changes them.
std::vector<Operation> annotationOperations();

} // namespace centre

#endif
