#ifndef LUMO_CENTRE_FORGE_STORAGEPLACE_H
#define LUMO_CENTRE_FORGE_STORAGEPLACE_H

#include "centre/store/ConnectionPool.h"
#include "components/bulkhaul/files/Folder.h"

#include <cstdint>
#include <string>
#include <vector>

namespace centre {

/// The real place of a folder of the storage catalogue. Functions throw Error(Failed) and
/// bulkhaul::FileFailure.
struct FolderPlace
{
    std::uint32_t folderId = 0;
    std::uint32_t diskId = 0;
    std::string root; ///< the disk's, absolute
    std::vector<std::string> below;

    /// Whether the disk's root is a folder of this machine.
    bool isLocal() const;
    /// Reaches nothing through a symbolic link below the root.
    bulkhaul::Folder open(bulkhaul::Folder::Missing missing = bulkhaul::Folder::Missing::Fail) const;
};

/// Throws if the place is in the centre's data folder or holds it.
void requireOutside(const std::string& dataFolder, const FolderPlace& place);

struct FilePlace
{
    FolderPlace folder;
    std::string name;
};

/// Returns the place of a folder. It must be one that the user may use in that way, and outside the data
/// folder.
FolderPlace placeOfFolder(Connection& connection, const User& user, Access access,
                          const std::string& dataFolder, std::uint32_t folderId);
/// The same for writing, by disk and folder. Disk 0 is the folder's disk, folder 0 the disk's top folder.
FolderPlace placeOfFolder(Connection& connection, const User& user, const std::string& dataFolder,
                          std::uint32_t diskId, std::uint32_t folderId);
FilePlace placeOfFile(Connection& connection, const User& user, Access access, const std::string& dataFolder,
                      std::uint32_t fileId);

} // namespace centre

#endif
