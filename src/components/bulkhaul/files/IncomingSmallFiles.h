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
/// file or link was kept instead. Throws FileFailure.
bool putFile(const Folder& folder, const std::string& name, const std::string& data, Existing existing);

/// Arriving files of at most one chunk each. They are flushed together, which is much cheaper than one by
/// one.
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

    /// Takes files below `root`, where it makes missing folders.
    IncomingSmallFiles(const Folder& root, Names names, Existing existing)
        : m_Folders(root, names == Names::Flushed ? Folder::Missing::MakeFlushed : Folder::Missing::Make),
          m_Names(names),
          m_Existing(existing)
    {
    }

    /// Whether an existing file or link keeps the name.
    bool keeps(const std::string& below);
    /// Returns the digest of the existing file; none unless a file of `size` bytes exists.
    std::optional<Digest> existingDigest(const std::string& below, std::uint64_t size);
    /// Writes the partial file. `data` must live until `finish`.
    void add(const std::string& below, const std::string& data);
    /// Flushes all files and gives them their names. Where another transfer has used the partial file in
    /// between, the data is written again. Returns how many existing files were kept instead.
    std::size_t finish();

private:
    struct File
    {
        std::string below;
        const std::string* data;
        Digest digest;
    };

    bool finish(const File& file);

    FolderCache m_Folders;
    const Names m_Names;
    const Existing m_Existing;
    std::vector<File> m_Files;
};

} // namespace bulkhaul

#endif
