#ifndef LUMO_BULKHAUL_FILES_INCOMINGSMALLFILES_H
#define LUMO_BULKHAUL_FILES_INCOMINGSMALLFILES_H

#include "components/bulkhaul/files/PartialFile.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace bulkhaul {

/// Writes, flushes and names one file, whose data has arrived as a whole. Returns false where an existing
/// file or link was kept instead. `waiting` is for another transfer that writes to the target. Throws
/// FileFailure.
bool putFile(const Folder& folder, const std::string& name, const std::string& data, Existing existing,
             Waiting waiting);

/// Arriving files of at most one chunk each. Up to 64 stay open, with their partial files locked; they are
/// flushed together, which is much cheaper than one by one. Functions throw FileFailure.
class IncomingSmallFiles
{
public:
    /// Whether `finish` flushes the names of files and new folders to the disk, too. Without that, a machine
    /// that crashes may have the old target afterwards.
    enum class Names
    {
        Given,
        Flushed
    };

    /// Takes files below `root`, where it makes missing folders. `waiting` is for other transfers that write
    /// to the targets.
    IncomingSmallFiles(const Folder& root, Names names, Existing existing, Waiting waiting = Waiting())
        : m_Folders(root, names == Names::Flushed ? Folder::Missing::MakeFlushed : Folder::Missing::Make),
          m_Names(names),
          m_Existing(existing),
          m_Waiting(waiting)
    {
    }

    /// Whether an existing file or link keeps the name.
    bool keeps(const std::string& below);
    /// Returns the digest of the existing file; none unless a file of `size` bytes exists.
    std::optional<Digest> existingDigest(const std::string& below, std::uint64_t size);
    /// Writes the partial file. It waits for another transfer only while no file of this object is open, so
    /// that two objects never wait for each other.
    void add(const std::string& below, const std::string& data);
    /// Flushes the files that are left and gives them their names. Returns how many existing files were kept
    /// instead, of all that were added.
    std::size_t finish();

private:
    struct File
    {
        std::string below;
        PartialFile partial;
    };

    PartialFile open(const std::string& below);
    void nameOpenFiles();

    FolderCache m_Folders;
    const Names m_Names;
    const Existing m_Existing;
    const Waiting m_Waiting;
    std::vector<File> m_Open;
    std::size_t m_Kept = 0;
};

} // namespace bulkhaul

#endif
