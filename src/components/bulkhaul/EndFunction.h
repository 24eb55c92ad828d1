#ifndef LUMO_BULKHAUL_ENDFUNCTION_H
#define LUMO_BULKHAUL_ENDFUNCTION_H

#include "lumo/components/bulkhaul/TransferEnd.h"

namespace bulkhaul {

/// Calls the end function of the process, if one is set.
void callEndFunction(const TransferEnd& end);

} // namespace bulkhaul

#endif
