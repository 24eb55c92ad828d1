#ifndef LUMO_BULKHAUL_FILES_FLUSHTOGETHER_H
#define LUMO_BULKHAUL_FILES_FLUSHTOGETHER_H

#include "components/bulkhaul/files/PartialFile.h"

#include <vector>

namespace bulkhaul {

/// Flushes the data of all files to the disk: by one flush of a file system where that takes less time.
/// Throws FileFailure.
void flushTogether(const std::vector<const PartialFile*>& files);

} // namespace bulkhaul

#endif
