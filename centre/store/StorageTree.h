#ifndef LUMO_CENTRE_STORE_STORAGETREE_H
#define LUMO_CENTRE_STORE_STORAGETREE_H

#include "centre/database/Database.h"
#include "centre/store/FileContent.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace centre {

/// Finds and adds folders and files of disks, inside the caller's transactions. For one thread at a time.
/// Throws DatabaseError.
class StorageTree
{
public:
    explicit StorageTree(Database& database);

    std::optional<std::uint32_t> topFolder(std::uint32_t diskId);
    std::optional<std::uint32_t> findFolder(std::uint32_t diskId, std::uint32_t parentId,
                                            const std::string& name);
    /// Adds a folder that `findFolder` does not find. Returns its identifier.
    std::uint32_t addFolder(std::uint32_t diskId, std::uint32_t parentId, const std::string& name);
    /// Returns the folder that the names lead to. Adds those that are missing.
    std::uint32_t makeFolders(std::uint32_t diskId, std::uint32_t parentId,
                              const std::vector<std::string>& names);
    /// Adds a file, or leaves it as it is.
    void addFile(std::uint32_t folderId, const std::string& name);
    /// Adds a file, or replaces what is known about the content of one that exists.
    void addFile(std::uint32_t folderId, const std::string& name, const FileContent& content);

private:
    std::unique_ptr<Statement> m_TopFolder;
    std::unique_ptr<Statement> m_FindFolder;
    std::unique_ptr<Statement> m_AddFolder;
    std::unique_ptr<Statement> m_AddFile;
    std::unique_ptr<Statement> m_AddContent;
    std::unique_ptr<Statement> m_SetContent;
};

/// Returns the SQL that selects `full_path` and `kesta_code` of a place on a disk. `start` selects the folder
/// that the place is in (`folder_id`) and the rest of the path, from "/" on (`below`). A WHERE may follow.
std::string fullPath(const std::string& start);

} // namespace centre

#endif
