#ifndef LUMO_CENTRE_CONTENT_PRUNE_H
#define LUMO_CENTRE_CONTENT_PRUNE_H

#include "centre/content/DiskWalk.h"

#include <cstdint>
#include <functional>
#include <string>

namespace centre {

struct PruneOptions
{
    bool remove = false; ///< otherwise only report what would be removed
    /// Is called for each entry that is removed, or would be.
    std::function<void(const DiskEntry&)> removed;
    /// Is called for each file that is gone and stays, since it is the main file of records, such as
    /// "sat 17, sat 18".
    std::function<void(const DiskEntry&, const std::string& records)> kept;
    /// Is called for what can't be judged, with everything below it.
    std::function<void(const std::string& path, const std::string& reason)> skipped;
    std::function<void(std::uint64_t)> progress; ///< gets the number of entries so far
};

struct PruneReport
{
    std::uint64_t files = 0; ///< that were removed, or would be
    std::uint64_t folders = 0;
    std::uint64_t links = 0;    ///< of projects to these
    std::uint64_t comments = 0; ///< on these
    std::uint64_t kept = 0;     ///< main files of records
    std::uint64_t skipped = 0;
};

/// Removes the entries of a disk whose file or folder is gone from the catalogue, in transactions of a
/// thousand, with the links of projects to them and the comments on them. Files that are the main files of
/// records stay, and so do the folders that hold them. What appears again while it runs stays. Throws Error
/// when the disk's root can't be read, or is empty: the disk may not be mounted.
PruneReport pruneDisk(Store& store, const Disk& disk, const PruneOptions& options);

} // namespace centre

#endif
