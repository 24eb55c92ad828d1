#ifndef LUMO_BULKHAUL_TREEUPLOAD_H
#define LUMO_BULKHAUL_TREEUPLOAD_H

#include "components/bulkhaul/Folder.h"
#include "components/bulkhaul/Transfer.h"

#include <string>

namespace bulkhaul {

/// Moves what is in a folder of this machine to the folder `boxPath` of a box. Throws TransferFailure or
/// FileFailure.
void uploadTree(const Transfer& transfer, const Folder& root, const std::string& boxPath);

} // namespace bulkhaul

#endif
