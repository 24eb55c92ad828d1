#ifndef LUMO_CENTRE_CONTENT_IMPORT_H
#define LUMO_CENTRE_CONTENT_IMPORT_H

#include "centre/content/DiskWalk.h"

#include <cstdint>
#include <functional>
#include <string>

namespace centre {

struct ImportOptions
{
    std::string folder;       ///< the real folder whose content the disk shows
    std::string diskName;     ///< the first import makes the disk
    std::string companyNo;    ///< the company that owns the disk
    std::string boxCode;      ///< the storage box that holds the disk; empty: none, or as it was
    bool readDigests = false; ///< read all files and keep their digests
    /// Gets a text for a terminal for each entry that can't be imported.
    std::function<void(const std::string&)> problem = [](const std::string&) {};
    std::function<void(std::uint64_t)> progress = [](std::uint64_t) {}; ///< gets the number of entries so far
};

struct ImportReport
{
    std::string rootPath; ///< absolute, without symbolic links
    bool diskIsNew = false;
    std::uint64_t newFolders = 0;
    std::uint64_t knownFolders = 0;
    std::uint64_t newFiles = 0;
    std::uint64_t knownFiles = 0;
    std::uint64_t changedFiles = 0; ///< known ones that have another size or digest now
    NotServed notServed{};
    std::uint64_t problems = 0; ///< what can't be read or has no name or path that a box serves
};

/// Registers every folder and file below a real folder as the content of a disk, in the order of their
/// names, with the sizes of the files. Leaves out what a box does not serve: links, special files and partial
/// files of transfers. A folder or file that is registered already keeps its identifier, even after it has
/// gone from the real folder; so another import completes one that was interrupted. Imports what it can and
/// reports the rest as problems. Throws Error.
ImportReport importTree(Store& store, const ImportOptions& options);

/// Returns a real folder's path, absolute and without symbolic links. Throws Error unless it is one whose
/// content a disk of the catalogue may show.
std::string realFolder(const Store& store, const std::string& folder);

/// The same as importTree for the content of one folder of a disk that exists, whose path from the disk's
/// root is `below`. Returns the folder's identifier, and adds to the report.
std::uint32_t importFolder(Store& store, const Disk& disk, const std::string& below,
                           const ImportOptions& options, ImportReport& report);

} // namespace centre

#endif
