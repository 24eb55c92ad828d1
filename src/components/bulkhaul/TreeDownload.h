#ifndef LUMO_BULKHAUL_TREEDOWNLOAD_H
#define LUMO_BULKHAUL_TREEDOWNLOAD_H

#include "components/bulkhaul/Transfer.h"
#include "components/bulkhaul/files/Folder.h"

#include <string>

namespace bulkhaul {

/// Moves what is in the folder `boxPath` of a box to `target`. `handle` is that of the transfer.
/// `targetIsNew` says that the transfer has made the target. Throws TransferFailure or FileFailure.
void downloadTree(const Transfer& transfer, const std::string& handle, const std::string& boxPath,
                  const Folder& target, bool targetIsNew);

} // namespace bulkhaul

#endif
