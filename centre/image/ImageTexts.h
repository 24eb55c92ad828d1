#ifndef LUMO_CENTRE_IMAGE_IMAGETEXTS_H
#define LUMO_CENTRE_IMAGE_IMAGETEXTS_H

#include "image/image_process.pb.h"

#include <string>
#include <utility>
#include <vector>

namespace centre {

// What is known of an image, as texts of the catalogue.

/// Returns format, width, height and bands, and the type of the pixels unless it is Byte:
/// "GTiff 512x256x1 Int16". A TIFF without georeference is a TIFF.
std::string formatText(const image::Image& image);

/// Returns the reference system and the bounds in its units, "EPSG:4326 west 70 south 10 east 150 north 55";
/// empty without georeference. The numbers are as exact as fits into the records of the clients.
std::string georeferenceText(const image::Image& image);

/// Returns what an image has of `sensor`, `date` (of the exposure), and `west`, `south`, `east`, `north` in
/// degrees of WGS 84, by these keys.
std::vector<std::pair<std::string, std::string>> searchTexts(const image::Image& image);

/// Returns an image as a JSON object whose keys are the fields' names in lowerCamelCase; and reads that.
/// `imageOf` returns an empty image for any other text.
std::string jsonText(const image::Image& image);
image::Image imageOf(const std::string& json);

} // namespace centre

#endif
