#include "centre/store/StorageTree.h"

#include "centre/store/ResetAtEnd.h"

namespace centre {

namespace {

std::optional<std::uint32_t> identifier(SQLite::Statement& statement)
{
    if (!statement.executeStep())
        return std::nullopt;
    return statement.getColumn(0).getUInt();
}

} // namespace

StorageTree::StorageTree(SQLite::Database& database)
    : m_Database(database),
      m_TopFolder(database, "SELECT id FROM folder WHERE disk_id = ? AND parent_id = 0"),
      m_FindFolder(database, "SELECT id FROM folder WHERE disk_id = ? AND parent_id = ? AND name = ?"),
      m_AddFolder(database, "INSERT INTO folder(disk_id, parent_id, name) VALUES (?, ?, ?)"),
      m_AddFile(database, "INSERT INTO file(parent_id, name) VALUES (?, ?)"
                          " ON CONFLICT (parent_id, name) DO NOTHING")
{
}

std::optional<std::uint32_t> StorageTree::topFolder(std::uint32_t diskId)
{
    const ResetAtEnd resetAtEnd(m_TopFolder);
    SQLite::bind(m_TopFolder, diskId);
    return identifier(m_TopFolder);
}

std::optional<std::uint32_t> StorageTree::findFolder(std::uint32_t diskId, std::uint32_t parentId,
                                                     const std::string& name)
{
    const ResetAtEnd resetAtEnd(m_FindFolder);
    SQLite::bind(m_FindFolder, diskId, parentId, name);
    return identifier(m_FindFolder);
}

std::uint32_t StorageTree::addFolder(std::uint32_t diskId, std::uint32_t parentId, const std::string& name)
{
    const ResetAtEnd resetAtEnd(m_AddFolder);
    SQLite::bind(m_AddFolder, diskId, parentId, name);
    m_AddFolder.exec();
    return static_cast<std::uint32_t>(m_Database.getLastInsertRowid());
}

std::uint32_t StorageTree::makeFolders(std::uint32_t diskId, std::uint32_t parentId,
                                       const std::vector<std::string>& names)
{
    for (const std::string& name : names) {
        const std::optional<std::uint32_t> known = findFolder(diskId, parentId, name);
        parentId = known ? *known : addFolder(diskId, parentId, name);
    }
    return parentId;
}

bool StorageTree::addFile(std::uint32_t folderId, const std::string& name)
{
    const ResetAtEnd resetAtEnd(m_AddFile);
    SQLite::bind(m_AddFile, folderId, name);
    return m_AddFile.exec() > 0;
}

std::string fullPath(const std::string& start)
{
    return "WITH RECURSIVE up(folder_id, below) AS (" + start +
           " UNION ALL SELECT parent_id, '/' || name || below FROM up JOIN folder ON folder.id = folder_id"
           " WHERE parent_id <> 0)"
           " SELECT CASE below WHEN '' THEN root_path ELSE rtrim(root_path, '/') || below END AS full_path,"
           " kesta_code FROM up JOIN folder ON folder.id = folder_id AND parent_id = 0"
           " JOIN disk ON disk.id = disk_id";
}

} // namespace centre
