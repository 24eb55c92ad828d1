#include "centre/forge/SceneFiles.h"

#include "centre/database/Statement.h"
#include "centre/forge/StoragePlace.h"

#include <unordered_set>

namespace centre {

namespace {

const Sql kBeside("SELECT 1 FROM file WHERE parent_id = ? AND name = ?");

FilePlace placeOf(ConnectionPool& pool, const User& user, std::uint32_t fileId)
{
    ConnectionPool::Lease connection(pool);
    return placeOfFile(*connection, user, Access::Read, pool.dataFolder(), fileId);
}

/// Keeps the names of files that are in the folder, once each, without a leading "./".
void keepThoseIn(Connection& connection, std::uint32_t folderId,
                 google::protobuf::RepeatedPtrField<std::string>& names)
{
    Statement& beside = connection.statement(kBeside);
    google::protobuf::RepeatedPtrField<std::string> kept;
    std::unordered_set<std::string> known;
    for (std::string& name : names) {
        if (name.rfind("./", 0) == 0)
            name.erase(0, 2);
        if (!known.insert(name).second)
            continue;
        const ResetAtEnd resetAtEnd(beside);
        beside.bindAll(folderId, name);
        if (beside.step())
            *kept.Add() = name;
    }
    names.Swap(&kept);
}

} // namespace

image::Scene readScene(ConnectionPool& pool, ImageReader& images, const User& user, std::uint32_t fileId,
                       image::SceneForm form, const IsCanceled& isCanceled)
{
    const FilePlace place = placeOf(pool, user, fileId);
    image::Scene scene;
    scene.add_meta_files(place.name);
    scene.MergeFrom(images.scene(place.folder.open(), place.name, form, isCanceled));
    ConnectionPool::Lease connection(pool);
    keepThoseIn(*connection, place.folder.folderId, *scene.mutable_main_files());
    keepThoseIn(*connection, place.folder.folderId, *scene.mutable_meta_files());
    return scene;
}

} // namespace centre
