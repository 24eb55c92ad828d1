#ifndef LUMO_CENTRE_IMAGE_GEOREFERENCE_H
#define LUMO_CENTRE_IMAGE_GEOREFERENCE_H

#include "image/image_process.pb.h"

#include <gdal_priv.h>

namespace centre {

/// Fills in reference system, transform, bounds and footprint, as far as the image has a georeference.
void describePlace(GDALDataset& dataset, image::Image& facts);

} // namespace centre

#endif
