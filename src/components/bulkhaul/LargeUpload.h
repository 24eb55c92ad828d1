#ifndef LUMO_BULKHAUL_LARGEUPLOAD_H
#define LUMO_BULKHAUL_LARGEUPLOAD_H

#include "components/bulkhaul/Transfer.h"
#include "components/bulkhaul/files/SourceFile.h"

namespace bulkhaul {

/// Moves a file of more than one chunk. `target` names it: message and path, or the transfer of a folder and
/// the path below that. Reports its bytes as progress. Throws TransferFailure or FileFailure.
void uploadLarge(const Transfer& transfer, const SourceFile& source, haulbox::BeginReq target);

} // namespace bulkhaul

#endif
