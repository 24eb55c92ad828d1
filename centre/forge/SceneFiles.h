#ifndef LUMO_CENTRE_FORGE_SCENEFILES_H
#define LUMO_CENTRE_FORGE_SCENEFILES_H

#include "centre/forge/SceneMetadata.h"
#include "centre/store/ConnectionPool.h"

namespace centre {

/// Reads the metadata file of a scene, a file of the storage catalogue. Of the files that it names those that
/// stand beside it in the catalogue are left; the metadata file itself is the first of the metaFiles.
/// Throws std::exception with the reason.
Scene readScene(ConnectionPool& pool, const User& user, std::uint32_t fileId,
                Scene (*read)(const std::string& content));

/// The content of a metadata file of the storage catalogue, at most 16 MiB. Throws std::exception.
std::string readMetadataFile(ConnectionPool& pool, const User& user, std::uint32_t fileId);

} // namespace centre

#endif
