#ifndef LUMO_CENTRE_FORGE_SCENEFILES_H
#define LUMO_CENTRE_FORGE_SCENEFILES_H

#include "centre/forge/SceneMetadata.h"
#include "centre/store/ConnectionPool.h"

namespace centre {

/// Reads the metadata file of a scene, a file of the storage catalogue. Keeps the names of files that are in
/// the same folder of the catalogue, and puts the metadata file itself first in metaFiles. Throws
/// std::exception with the reason.
Scene readScene(ConnectionPool& pool, const User& user, std::uint32_t fileId,
                Scene (*read)(const std::string& content));

/// The content of a metadata file of the storage catalogue, at most 16 MiB. Throws std::exception.
std::string readMetadataFile(ConnectionPool& pool, const User& user, std::uint32_t fileId);

} // namespace centre

#endif
