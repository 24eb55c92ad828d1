#ifndef LUMO_BULKHAUL_TREEUPLOAD_H
#define LUMO_BULKHAUL_TREEUPLOAD_H

#include "components/bulkhaul/Transfer.h"
#include "components/bulkhaul/files/Folder.h"

#include <string>

namespace bulkhaul {

/// Moves what is in a folder of this machine to the folder `boxPath` of a box. Throws TransferFailure or
/// FileFailure.
void uploadTree(const Transfer& transfer, const Folder& root, const std::string& boxPath);

} // namespace bulkhaul

#endif
