#include "centre/base/Error.h"
#include "centre/image/process/RasterFile.h"

#include <cpl_string.h>
#include <cpl_vsi.h>
#include <gdal_utils.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>

namespace centre {

namespace {

constexpr char kPicture[] = "/vsimem/picture";
/// The largest number of pixels that are all read for a quick look; of a larger image without overviews one
/// pixel of many is.
constexpr std::uint64_t kMostPixelsAveraged = 1 << 26;

/// The options for gdal_translate that make a picture: an image in color by its first three bands, any other
/// by its first, the values of more than a byte stretched between the smallest and the largest.
CPLStringList optionsOf(GDALDataset& dataset, unsigned longestSide, bool inColor)
{
    const double longest = std::max(dataset.GetRasterXSize(), dataset.GetRasterYSize());
    const double scale = std::min(1.0, longestSide / longest);
    const auto side = [scale](int pixels) {
        return std::to_string(std::max(1L, std::lround(pixels * scale)));
    };
    GDALRasterBand& first = *dataset.GetRasterBand(1);
    CPLStringList options;
    for (const char* each : {"-q", "-of", inColor ? "JPEG" : "PNG", "-ot", "Byte"})
        options.AddString(each);
    for (const std::string& each :
         {std::string("-outsize"), side(dataset.GetRasterXSize()), side(dataset.GetRasterYSize())})
        options.AddString(each.c_str());
    const auto pixels = static_cast<std::uint64_t>(dataset.GetRasterXSize()) *
                        static_cast<std::uint64_t>(dataset.GetRasterYSize());
    const bool fromPalette = first.GetColorTable() != nullptr;
    if (!fromPalette && scale < 1 && (first.GetOverviewCount() > 0 || pixels <= kMostPixelsAveraged))
        for (const char* each : {"-r", "average"})
            options.AddString(each);
    for (const char* band : {"1", "2", "3"})
        if (inColor || *band == '1') {
            options.AddString("-b");
            options.AddString(band);
        }
    if (first.GetRasterDataType() != GDT_Byte)
        options.AddString("-scale");
    for (const char* each : {"-a_nodata", "none", "-nogcp", "-norat"})
        options.AddString(each);
    return options;
}

} // namespace

image::Picture RasterFile::quickLook(unsigned longestSide)
{
    if (longestSide == 0)
        throw refusal("a quick look needs at least one pixel");
    const bool inColor = bands() >= 3;
    CPLStringList texts = optionsOf(*m_Dataset, longestSide, inColor);
    const std::unique_ptr<GDALTranslateOptions, decltype(&GDALTranslateOptionsFree)> options(
        GDALTranslateOptionsNew(texts.List(), nullptr), &GDALTranslateOptionsFree);
    int error = 0;
    GDALDatasetH made = options ? GDALTranslate(kPicture, m_Dataset.get(), options.get(), &error) : nullptr;
    if (made != nullptr)
        GDALClose(made);
    vsi_l_offset size = 0;
    const std::unique_ptr<GByte, decltype(&VSIFree)> data(VSIGetMemFileBuffer(kPicture, &size, TRUE),
                                                          &VSIFree);
    VSIUnlink((std::string(kPicture) + ".aux.xml").c_str());
    if (made == nullptr || !data)
        throw refusal("no quick look can be made: " + m_Errors.first());
    image::Picture picture;
    picture.set_media_type(inColor ? "image/jpeg" : "image/png");
    picture.set_data(data.get(), static_cast<std::size_t>(size));
    return picture;
}

} // namespace centre
