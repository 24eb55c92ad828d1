#ifndef LUMO_CENTRE_CONTENT_CHECK_H
#define LUMO_CENTRE_CONTENT_CHECK_H

#include "centre/content/DiskWalk.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace centre {

/// How the catalogue and a disk differ in one place.
struct Difference
{
    enum class Kind
    {
        Missing, ///< in the catalogue, not on the disk
        Extra,   ///< on the disk, not in the catalogue
        Size,    ///< a file has another size
        Digest,  ///< a file has the same size and another digest
        OtherKind,
        Unread ///< could not be compared, with everything below it
    };

    Kind kind;
    DiskEntry entry;      ///< of Unread: nothing
    std::string digest{}; ///< of Digest: the real file's
    std::string path{};   ///< of Unread: on this machine, any bytes
    std::string reason{}; ///< of Unread
};

/// The kind as one word, such as "missing".
std::string nameOf(Difference::Kind kind);

/// What a comparison of a disk found.
struct CheckReport
{
    std::uint64_t folders = 0; ///< the same in catalogue and on disk
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;        ///< of these files
    std::uint64_t unknownSizes = 0; ///< files of which the catalogue knows no size
    std::uint64_t digests = 0;      ///< files that were read and have the catalogue's digest
    std::map<Difference::Kind, std::uint64_t> differences{};
    NotServed notServed{};

    std::uint64_t count(Difference::Kind kind) const;
    /// Whether the catalogue and the disk differ, as far as they could be compared.
    bool differs() const;
};

struct CheckOptions
{
    bool readDigests = false; ///< read the files whose digest the catalogue knows
    std::function<void(const Difference&)> report;
    std::function<void(std::uint64_t)> progress; ///< gets the number of entries so far
};

/// Compares the catalogue and a disk, and changes neither. Throws Error when the disk's root can't be read,
/// or is empty although the catalogue has entries.
CheckReport checkDisk(Store& store, const Disk& disk, const CheckOptions& options);

} // namespace centre

#endif
