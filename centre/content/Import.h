#ifndef LUMO_CENTRE_CONTENT_IMPORT_H
#define LUMO_CENTRE_CONTENT_IMPORT_H

#include <cstdint>
#include <functional>
#include <string>

namespace centre {

class Store;

struct ImportOptions
{
    std::string folder;    ///< the real folder whose content the disk shows
    std::string diskName;  ///< the first import makes the disk
    std::string companyNo; ///< the company that owns the disk
    std::string boxCode;   ///< the storage box that holds the disk; empty: none, or as it was
};

struct ImportReport
{
    std::string rootPath; ///< absolute, without symbolic links
    bool diskIsNew = false;
    std::uint64_t newFolders = 0;
    std::uint64_t knownFolders = 0;
    std::uint64_t newFiles = 0;
    std::uint64_t knownFiles = 0;
    std::uint64_t skipped = 0;  ///< symbolic links and special files
    std::uint64_t problems = 0; ///< names that are not UTF-8, folders that can't be read
};

/// Registers every folder and file below a real folder as the content of a disk, in the order of their
/// names. A folder or file that is registered already keeps its identifier, even after it has gone from the
/// real folder; so another import completes one that was interrupted. Calls `problem` with a text for a
/// terminal for each entry that it can't import, and imports the rest. Throws Error.
ImportReport importTree(Store& store, const ImportOptions& options,
                        const std::function<void(const std::string&)>& problem);

} // namespace centre

#endif
