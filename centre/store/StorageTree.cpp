#include "centre/store/StorageTree.h"

#include "centre/database/Sql.h"
#include "centre/database/Statement.h"

namespace centre {

namespace {

const Sql kTopFolder("SELECT id FROM folder WHERE disk_id = ? AND parent_id = 0");
const Sql kFindFolder("SELECT id FROM folder WHERE disk_id = ? AND parent_id = ? AND name = ?");
const Sql kAddFolder("INSERT INTO folder(disk_id, parent_id, name) VALUES (?, ?, ?)"
                     " ON CONFLICT DO NOTHING RETURNING id");
// What exists takes no identifier; the conflict is for what another connection adds meanwhile.
const Sql kAddFile("INSERT INTO file(parent_id, name) SELECT :parent, :name WHERE NOT EXISTS"
                   " (SELECT 1 FROM file WHERE parent_id = :parent AND name = :name)"
                   " ON CONFLICT (parent_id, name) DO NOTHING");
const Sql kAddContent("INSERT INTO file(parent_id, name, size, digest)"
                      " SELECT :parent, :name, :size, nullif(:digest, '') WHERE NOT EXISTS"
                      " (SELECT 1 FROM file WHERE parent_id = :parent AND name = :name)"
                      " ON CONFLICT (parent_id, name) DO UPDATE"
                      " SET size = excluded.size, digest = excluded.digest");
const Sql kSetContent("UPDATE file SET size = :size, digest = nullif(:digest, '')"
                      " WHERE parent_id = :parent AND name = :name");

std::optional<std::uint32_t> identifier(Statement& statement)
{
    if (!statement.step())
        return std::nullopt;
    return statement.id(0);
}

} // namespace

StorageTree::StorageTree(Database& database)
    : m_TopFolder(database.prepare(kTopFolder)),
      m_FindFolder(database.prepare(kFindFolder)),
      m_AddFolder(database.prepare(kAddFolder)),
      m_AddFile(database.prepare(kAddFile)),
      m_AddContent(database.prepare(kAddContent)),
      m_SetContent(database.prepare(kSetContent))
{
}

std::optional<std::uint32_t> StorageTree::topFolder(std::uint32_t diskId)
{
    const ResetAtEnd resetAtEnd(*m_TopFolder);
    m_TopFolder->bindAll(diskId);
    return identifier(*m_TopFolder);
}

std::optional<std::uint32_t> StorageTree::findFolder(std::uint32_t diskId, std::uint32_t parentId,
                                                     const std::string& name)
{
    const ResetAtEnd resetAtEnd(*m_FindFolder);
    m_FindFolder->bindAll(diskId, parentId, name);
    return identifier(*m_FindFolder);
}

std::uint32_t StorageTree::addFolder(std::uint32_t diskId, std::uint32_t parentId, const std::string& name)
{
    m_AddFolder->bindAll(diskId, parentId, name);
    if (const auto added = m_AddFolder->runForId())
        return *added;
    return findFolder(diskId, parentId, name).value(); // another connection was faster
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

void StorageTree::addFile(std::uint32_t folderId, const std::string& name)
{
    const ResetAtEnd resetAtEnd(*m_AddFile);
    m_AddFile->bindAll(folderId, name);
    m_AddFile->run();
}

void StorageTree::addFile(std::uint32_t folderId, const std::string& name, const FileContent& content)
{
    const ResetAtEnd resetAdd(*m_AddContent);
    m_AddContent->bindAll(folderId, name, content.size, content.digest);
    if (m_AddContent->run() > 0)
        return;
    const ResetAtEnd resetSet(*m_SetContent);
    m_SetContent->bindAll(content.size, content.digest, folderId, name);
    m_SetContent->run();
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
