#ifndef LUMO_CENTRE_FORGE_SCENEFILES_H
#define LUMO_CENTRE_FORGE_SCENEFILES_H

#include "centre/image/ImageReader.h"
#include "centre/store/ConnectionPool.h"

namespace centre {

/// Reads the metadata file of a scene, a file of the storage catalogue. Keeps the names of files that are in
/// the same folder of the catalogue, and puts the metadata file itself first in meta_files. Throws
/// std::exception with the reason.
image::Scene readScene(ConnectionPool& pool, ImageReader& images, const User& user, std::uint32_t fileId,
                       image::SceneForm form, const IsCanceled& isCanceled);

} // namespace centre

#endif
