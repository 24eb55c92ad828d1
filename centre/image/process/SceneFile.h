#ifndef LUMO_CENTRE_IMAGE_SCENEFILE_H
#define LUMO_CENTRE_IMAGE_SCENEFILE_H

#include "image/image_process.pb.h"

namespace centre {

/// Reads a scene's metadata file of at most 16 MiB. Throws Error(Failed) with the reason.
image::Scene readScene(int file, image::SceneForm form);

} // namespace centre

#endif
