#ifndef LUMO_CENTRE_CONTENT_DISKWALK_H
#define LUMO_CENTRE_CONTENT_DISKWALK_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace centre {

class Store;

/// A disk of the catalogue. Its root is a folder of the machine of its storage box.
struct Disk
{
    std::uint32_t id = 0;
    std::uint32_t topFolderId = 0;
    std::string name;
    std::string companyNo;
    std::string rootPath;
};

/// What to look for; an empty text matches everything.
struct DiskFilter
{
    std::string name;
    std::string companyNo;
    std::string boxCode;
};

/// Returns the disks that match, in the order of their identifiers. Throws Error.
std::vector<Disk> findDisks(Store& store, const DiskFilter& filter);

/// A file or folder that the catalogue has, or the disk, or both.
struct DiskEntry
{
    enum class Real
    {
        Absent,   ///< gone, or a partial file of a transfer, which counts as absent
        Present,  ///< a file where the catalogue has a file, a folder where it has a folder
        OtherKind ///< a folder, link or special file where the catalogue has a file, or the like
    };

    std::string below; ///< its path from the disk's root, with "/"
    bool isFolder = false;
    std::uint32_t id = 0;                         ///< in the catalogue; 0: it is not there
    std::optional<std::uint64_t> catalogueSize{}; ///< of a file, in bytes
    std::string catalogueDigest{};                ///< of a file, in hexadecimal; empty: unknown
    Real real = Real::Absent;
    std::uint64_t size = 0; ///< of a file that is present, in bytes
};

/// How many entries of a disk no box serves, by the reason.
struct NotServed
{
    std::uint64_t links = 0;
    std::uint64_t special = 0; ///< devices, pipes, sockets
    std::uint64_t partial = 0; ///< partial files of transfers
    std::uint64_t names = 0;   ///< names that are not UTF-8, paths that are too long or too deep

    /// Returns "3 links, 1 partial file", or "nothing".
    std::string text() const;
};

/// Whether a box can serve a path from a disk's root: its names are those that transfers move, and it is not
/// too deep.
bool canBeServed(const std::string& below);

/// What a walk calls.
class DiskVisitor
{
public:
    virtual ~DiskVisitor() = default;

    /// Visits a folder before its content. Returns whether to go into a folder. May give an entry an
    /// identifier, for a folder that it has added to the catalogue.
    virtual bool visit(DiskEntry& entry) = 0;
    /// Visits a folder after its content.
    virtual void leave(const DiskEntry& folder);
    /// Is called for what can't be read: `path` with everything below it, of which the walk visits nothing.
    virtual void skip(const std::string& path, const std::string& reason) = 0;
    /// The same for a name or path that no box serves; such an entry is not in the catalogue.
    virtual void refuse(const std::string& path, const std::string& reason);
};

/// Visits everything that the catalogue has of a disk and everything that the disk has, in the order of
/// names. It reads a folder of the catalogue before the real one, so what is uploaded meanwhile is never
/// taken for gone. Memory grows with the largest folder; a folder takes two SQL statements. Links are not
/// followed.
class DiskWalk
{
public:
    DiskWalk(Store& store, const Disk& disk);
    ~DiskWalk();

    /// Throws Error(Failed) when the disk's root is missing, or empty although the catalogue has entries: it
    /// may not be mounted.
    void requireMounted();

    void run(DiskVisitor& visitor);
    /// The same for the content of one folder of the disk and of the catalogue.
    void run(DiskVisitor& visitor, const std::string& below, std::uint32_t folderId);
    /// Returns what the walk has met so far.
    const NotServed& notServed() const;

private:
    class Walk;
    std::unique_ptr<Walk> m_Walk;
};

/// Returns the digest of a file as the catalogue has it: XXH3-128 of the digests of its chunks of 1 MiB, in
/// hexadecimal. Throws Error(Failed) for a file that can't be read.
std::string digestOfFile(const std::string& path);

} // namespace centre

#endif
