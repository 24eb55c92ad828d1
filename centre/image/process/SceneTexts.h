#ifndef LUMO_CENTRE_IMAGE_SCENETEXTS_H
#define LUMO_CENTRE_IMAGE_SCENETEXTS_H

#include "image/image_process.pb.h"

#include <gdal_priv.h>

namespace centre {

/// Fills in sensor, date and files, as far as the metadata of the image has them.
void describeScene(GDALDataset& dataset, image::Image& facts);

} // namespace centre

#endif
