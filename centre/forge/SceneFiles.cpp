#include "centre/forge/SceneFiles.h"

#include "centre/database/Statement.h"
#include "centre/forge/StoragePlace.h"

#include <unordered_set>

namespace centre {

namespace {

constexpr std::uint64_t kLargest = 16 << 20;
constexpr char kBeside[] = "SELECT 1 FROM file WHERE parent_id = ? AND name = ?";

FilePlace placeOf(ConnectionPool& pool, const User& user, std::uint32_t fileId)
{
    ConnectionPool::Lease connection(pool);
    return placeOfFile(*connection, user, pool.dataFolder(), fileId);
}

/// Keeps the names of files that are in the folder, once each, without a leading "./".
void keepThoseIn(Connection& connection, std::uint32_t folderId, std::vector<std::string>& names)
{
    Statement& beside = connection.statement(kBeside);
    std::vector<std::string> kept;
    std::unordered_set<std::string> known;
    for (std::string& name : names) {
        if (name.rfind("./", 0) == 0)
            name.erase(0, 2);
        if (!known.insert(name).second)
            continue;
        const ResetAtEnd resetAtEnd(beside);
        beside.bindAll(folderId, name);
        if (beside.step())
            kept.push_back(name);
    }
    names = std::move(kept);
}

} // namespace

Scene readScene(ConnectionPool& pool, const User& user, std::uint32_t fileId,
                Scene (*read)(const std::string& content))
{
    const FilePlace place = placeOf(pool, user, fileId);
    Scene scene = read(readFile(place, kLargest));
    scene.metaFiles.insert(scene.metaFiles.begin(), place.name);
    ConnectionPool::Lease connection(pool);
    keepThoseIn(*connection, place.folder.folderId, scene.mainFiles);
    keepThoseIn(*connection, place.folder.folderId, scene.metaFiles);
    return scene;
}

std::string readMetadataFile(ConnectionPool& pool, const User& user, std::uint32_t fileId)
{
    return readFile(placeOf(pool, user, fileId), kLargest);
}

} // namespace centre
