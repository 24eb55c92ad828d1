#ifndef LUMO_CENTRE_FORGE_IMAGEFILE_H
#define LUMO_CENTRE_FORGE_IMAGEFILE_H

#include "centre/base/Cancellation.h"
#include "components/bulkhaul/files/Folder.h"

#include <cstdint>
#include <optional>
#include <string>

namespace centre {

/// The properties of an image file.
struct ImageFacts
{
    std::string format; ///< "GTiff", a TIFF with georeference; "TIFF", "JPEG", "PNG"
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t bands;

    /// The image's bounds, in the units of its reference system.
    struct Georeference
    {
        std::string system; ///< "EPSG:4326"; "local" if the file names no system of EPSG
        double west;
        double south;
        double east;
        double north;
    };
    std::optional<Georeference> georeference;
};

/// Reads an image from a regular file that is open for reading: its header, and as much as shows that its
/// data is there and whole. Of a TIFF the first image is read. Takes the file over and closes it, also when
/// it throws. Throws Error(Failed) with the reason, also when it is canceled. Bytes of any kind are safe.
ImageFacts readImage(bulkhaul::FileHandle file, const IsCanceled& isCanceled = neverCanceled);

/// "GTiff 512x256x3".
std::string formatText(const ImageFacts& facts);
/// "EPSG:4326 west 70 south 10 east 150 north 55"; empty without georeference.
std::string georeferenceText(const ImageFacts& facts);

} // namespace centre

#endif
