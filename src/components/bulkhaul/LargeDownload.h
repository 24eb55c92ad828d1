#ifndef LUMO_BULKHAUL_LARGEDOWNLOAD_H
#define LUMO_BULKHAUL_LARGEDOWNLOAD_H

#include "components/bulkhaul/Transfer.h"
#include "components/bulkhaul/files/Folder.h"

#include <cstdint>
#include <string>

namespace bulkhaul {

/// A file of more than one chunk in a box.
struct LargeSource
{
    std::string transfer; ///< the handle of the file's transfer, or of the folder's
    std::string below;    ///< in that folder; empty for the file itself
    std::uint64_t size;
    std::string version;
    std::string path; ///< for messages
};

/// Moves a file to `name` in `folder`. Reports its bytes as progress. Throws TransferFailure or FileFailure.
void downloadLarge(const Transfer& transfer, const LargeSource& source, const Folder& folder,
                   const std::string& name);

} // namespace bulkhaul

#endif
