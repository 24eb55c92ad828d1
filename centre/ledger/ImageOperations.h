#ifndef LUMO_CENTRE_LEDGER_IMAGEOPERATIONS_H
#define LUMO_CENTRE_LEDGER_IMAGEOPERATIONS_H

#include "centre/store/Query.h"

#include <vector>

namespace centre {

/// The operations of the image catalogue: projects, types, images, products and control data, made from
/// the columns of each kind.
std::vector<Operation> imageOperations(const Dialect& dialect);

/// The searches of the image catalogue; docs/centre.md says what they match.
std::vector<Operation> searchOperations(const Dialect& dialect);

} // namespace centre

#endif
