#include "centre/base/Cancellation.h"
#include "centre/base/Error.h"
#include "centre/forge/ImageFormats.h"

#include <geotiff/geotiffio.h>
#include <geotiff/xtiffio.h>
#include <tiffio.h>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <memory>
#include <string_view>
#include <vector>

namespace centre {

namespace {

using Tiff = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

/// Keeps the first error of a file and prints nothing.
int keepError(TIFF*, void* kept, const char*, const char* format, va_list arguments)
{
    auto& text = *static_cast<std::string*>(kept);
    if (text.empty()) {
        char buffer[512];
        text =
            std::vsnprintf(buffer, sizeof buffer, format, arguments) > 0 ? buffer : "an error without text";
    }
    return 1;
}

/// Keeps the warning about a field that can't be read: the library goes on without the field. Drops warnings
/// about odd fields, which many programs write.
int keepLoss(TIFF* tiff, void* kept, const char* module, const char* format, va_list arguments)
{
    return std::string_view(format).rfind("IO error", 0) == 0
               ? keepError(tiff, kept, module, format, arguments)
               : 1;
}

Tiff open(bulkhaul::FileHandle file, std::string& error)
{
    XTIFFInitialize();
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                   &TIFFOpenOptionsFree);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keepError, &error);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), keepLoss, &error);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMostMemory);
    // Not mapped: a file that is cut short meanwhile must be an error, not a signal.
    Tiff tiff(TIFFFdOpenExt(file.get(), "image", "rm", options.get()), &TIFFClose);
    if (!tiff)
        throw refusal("damaged TIFF: " + error);
    file.release();
    return tiff;
}

/// Throws unless the strips or tiles of the image lie in the file and the first and the last can be read.
/// Those that are too large are not read.
void requireData(TIFF* tiff, std::uint64_t fileSize, const IsCanceled& isCanceled, const std::string& error)
{
    constexpr std::uint64_t kLeastOfPiece = 4; // the bytes of a piece's offset
    const bool tiled = TIFFIsTiled(tiff) != 0;
    const std::uint32_t pieces = tiled ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
    const tmsize_t size = tiled ? TIFFTileSize(tiff) : TIFFStripSize(tiff);
    if (pieces == 0 || size <= 0 || pieces > fileSize / kLeastOfPiece)
        throw refusal("damaged TIFF: an impossible number or size of strips or tiles");
    bool allEmpty = true;
    for (std::uint32_t i = 0; i < pieces; ++i) {
        const std::uint64_t offset = TIFFGetStrileOffset(tiff, i);
        const std::uint64_t bytes = TIFFGetStrileByteCount(tiff, i);
        if (offset > fileSize || bytes > fileSize - offset)
            throw refusal("cut short: piece " + std::to_string(i + 1) + " of " + std::to_string(pieces) +
                          " of its data lies beyond the file's end");
        allEmpty = allEmpty && bytes == 0;
    }
    if (!error.empty())
        throw refusal("damaged TIFF: " + error);
    if (allEmpty)
        throw refusal("damaged TIFF: an image without data");
    if (size > kMostMemory)
        return;
    std::vector<char> data(static_cast<std::size_t>(size));
    for (const std::uint32_t i : {std::uint32_t(0), pieces - 1}) {
        requireNotCanceled(isCanceled);
        if (TIFFGetStrileByteCount(tiff, i) == 0)
            continue; // a piece that is left out is empty
        const tmsize_t read = tiled ? TIFFReadEncodedTile(tiff, i, data.data(), size)
                                    : TIFFReadEncodedStrip(tiff, i, data.data(), size);
        if (read < 0)
            throw refusal("damaged TIFF: " + error);
    }
}

std::string systemOf(GTIF* geo)
{
    for (const geokey_t key : {ProjectedCSTypeGeoKey, GeographicTypeGeoKey}) {
        unsigned short code = 0;
        if (GTIFKeyGetSHORT(geo, key, &code, 0, 1) == 1 && code > 0 && code < 32767)
            return "EPSG:" + std::to_string(code);
    }
    return "local";
}

std::optional<ImageFacts::Georeference> georeferenceOf(TIFF* tiff, const ImageFacts& facts)
{
    const std::unique_ptr<GTIF, decltype(&GTIFFree)> geo(GTIFNew(tiff), &GTIFFree);
    std::uint16_t count = 0;
    double* values = nullptr;
    const bool placed = TIFFGetField(tiff, TIFFTAG_GEOTIEPOINTS, &count, &values) != 0 ||
                        TIFFGetField(tiff, TIFFTAG_GEOTRANSMATRIX, &count, &values) != 0;
    if (!geo || !placed)
        return std::nullopt;
    unsigned short raster = RasterPixelIsArea;
    GTIFKeyGetSHORT(geo.get(), GTRasterTypeGeoKey, &raster, 0, 1);
    const double edge = raster == RasterPixelIsPoint ? -0.5 : 0; // the points are the pixels' centres
    ImageFacts::Georeference place{systemOf(geo.get()), HUGE_VAL, HUGE_VAL, -HUGE_VAL, -HUGE_VAL};
    for (const double column : {0.0, double(facts.width)})
        for (const double row : {0.0, double(facts.height)}) {
            double x = column + edge;
            double y = row + edge;
            if (GTIFImageToPCS(geo.get(), &x, &y) == 0 || !std::isfinite(x) || !std::isfinite(y))
                return std::nullopt;
            place.west = std::min(place.west, x);
            place.east = std::max(place.east, x);
            place.south = std::min(place.south, y);
            place.north = std::max(place.north, y);
        }
    return place;
}

} // namespace

ImageFacts readTiff(bulkhaul::FileHandle file, std::uint64_t size, const IsCanceled& isCanceled)
{
    std::string error;
    const Tiff tiff = open(std::move(file), error);
    ImageFacts facts{"TIFF", 0, 0, 0, std::nullopt};
    std::uint16_t bands = 1;
    TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &facts.width);
    TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &facts.height);
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, &bands);
    facts.bands = bands;
    if (facts.width == 0 || facts.height == 0 || facts.bands == 0)
        throw refusal("damaged TIFF: an image without pixels");
    requireData(tiff.get(), size, isCanceled, error);
    facts.georeference = georeferenceOf(tiff.get(), facts);
    if (facts.georeference)
        facts.format = "GTiff";
    return facts;
}

} // namespace centre
