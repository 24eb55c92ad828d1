#include "centre/forge/StoragePlace.h"

#include "centre/base/Error.h"
#include "centre/base/Path.h"
#include "centre/base/Text.h"
#include "centre/database/Statement.h"
#include "centre/store/Ownership.h"
#include "lumo/core/LumoDataTypes.h"

#include <filesystem>

namespace centre {

namespace {

// The names of the folders from the disk's root down to the folder.
const Sql kWayDown(
    "WITH RECURSIVE up(folder_id, step) AS (SELECT CAST(:folder AS BIGINT), 0 UNION ALL"
    " SELECT parent_id, step + 1 FROM up JOIN folder ON folder.id = folder_id WHERE parent_id <> 0)"
    " SELECT disk.id, root_path, folder.name, CASE parent_id WHEN 0 THEN 1 ELSE 0 END FROM up JOIN folder ON "
    "folder.id = folder_id"
    " JOIN disk ON disk.id = disk_id ORDER BY step DESC");
const Sql kFile("SELECT parent_id, name FROM file WHERE id = ?");

void requireUsable(Connection& connection, const User& user, Access access, int type, std::uint32_t id)
{
    (access == Access::Read ? requireReadable : requireOwn)(connection, user, type, id);
}

std::string pathOf(const FolderPlace& place)
{
    std::string path = place.root == "/" ? "" : place.root;
    for (const std::string& name : place.below)
        path += "/" + name;
    return path.empty() ? "/" : path;
}

} // namespace

bool FolderPlace::isLocal() const
{
    std::error_code error;
    return std::filesystem::is_directory(root, error);
}

bulkhaul::Folder FolderPlace::open(bulkhaul::Folder::Missing missing) const
{
    if (!isLocal())
        throw refusal("the root of disk " + std::to_string(diskId) + ", " + escaped(root) +
                      ", is not a folder on the centre's machine");
    return bulkhaul::Folder::open(root).below(below, missing);
}

void requireOutside(const std::string& dataFolder, const FolderPlace& place)
{
    if (overlap(dataFolder, pathOf(place)))
        throw refusal(escaped(pathOf(place)) + " is in the centre's data folder or holds it");
}

FolderPlace placeOfFolder(Connection& connection, const User& user, Access access,
                          const std::string& dataFolder, std::uint32_t folderId)
{
    requireUsable(connection, user, access, DATA_TYPE_FOLDER, folderId);
    Statement& way = connection.statement(kWayDown);
    const ResetAtEnd resetAtEnd(way);
    way.bindAll(folderId);
    FolderPlace place;
    place.folderId = folderId;
    while (way.step()) {
        place.diskId = way.id(0);
        place.root = way.string(1);
        if (way.id(3) == 0)
            place.below.push_back(way.string(2));
    }
    requireOutside(dataFolder, place);
    return place;
}

FolderPlace placeOfFolder(Connection& connection, const User& user, const std::string& dataFolder,
                          std::uint32_t diskId, std::uint32_t folderId)
{
    if (diskId != 0)
        requireOwn(connection, user, DATA_TYPE_DISK, diskId);
    if (folderId == 0 && diskId != 0)
        folderId = connection.storageTree().topFolder(diskId).value();
    FolderPlace place = placeOfFolder(connection, user, Access::Write, dataFolder, folderId);
    if (diskId != 0 && place.diskId != diskId)
        throw refusal("folder " + std::to_string(folderId) + " is on disk " + std::to_string(place.diskId) +
                      ", not on disk " + std::to_string(diskId));
    return place;
}

FilePlace placeOfFile(Connection& connection, const User& user, Access access, const std::string& dataFolder,
                      std::uint32_t fileId)
{
    requireUsable(connection, user, access, DATA_TYPE_FILE, fileId);
    std::uint32_t folderId = 0;
    std::string name;
    {
        Statement& file = connection.statement(kFile);
        const ResetAtEnd resetAtEnd(file);
        file.bindAll(fileId);
        file.step();
        folderId = file.id(0);
        name = file.string(1);
    }
    return {placeOfFolder(connection, user, access, dataFolder, folderId), name};
}

} // namespace centre
