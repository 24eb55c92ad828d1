#include "centre/image/process/RasterFile.h"

#include "centre/base/Error.h"
#include "centre/image/NoImage.h"
#include "centre/image/process/Georeference.h"
#include "centre/image/process/SceneTexts.h"

#include <cpl_conv.h>
#include <cpl_string.h>
#include <gdal.h>

#include <cstring>
#include <sys/stat.h>

namespace centre {

namespace {

/// Formats whose files name servers, hold databases, or are made in memory.
bool isWanted(GDALDriver* driver)
{
    for (const char* other :
         {"DAAS",   "DERIVED", "EEDA",   "EEDAI",    "GPKG",     "HTTP",          "MBTiles",
          "MEM",    "NGW",     "OGCAPI", "PLMOSAIC", "PLSCENES", "PostGISRaster", "Rasterlite",
          "STACIT", "STACTA",  "TileDB", "WCS",      "WMS",      "WMTS",          "Zarr"})
        if (EQUAL(driver->GetDescription(), other))
            return false;
    return driver->GetMetadataItem(GDAL_DCAP_RASTER) != nullptr &&
           driver->GetMetadataItem(GDAL_DCAP_OPEN) != nullptr &&
           driver->GetMetadataItem(GDAL_DCAP_VIRTUALIO) != nullptr;
}

/// Whether GDAL's error means that no driver knows the file, or that it is a document of DIMAP about
/// something else than an image.
bool isNoImage(const std::string& error)
{
    return error.find("not recognized as") != std::string::npos || error.rfind("Failed to find <", 0) == 0;
}

} // namespace

void setUpGdal()
{
    const std::pair<const char*, const char*> options[] = {
        {"GDAL_DRIVER_PATH", "disable"},
        {"GDAL_CACHEMAX", "64"}, // MB
        {"GDAL_NUM_THREADS", "1"},
        {"GDAL_PAM_ENABLED", "YES"},
        {"GDAL_DISABLE_READDIR_ON_OPEN", "TRUE"}, // a folder may have many files; their names are looked for
        {"GDAL_VRT_ENABLE_PYTHON", "NO"},
        {"GDAL_LIBJPEG_LARGEST_MEM_ALLOC", "268435456"},
        {"GDAL_JPEG_MAX_ALLOWED_SCAN_NUMBER", "101"},
        {"PROJ_NETWORK", "OFF"},
    };
    for (const auto& [name, value] : options)
        CPLSetConfigOption(name, value);
    GDALAllRegister();
    GDALDriverManager* manager = GetGDALDriverManager();
    for (int i = manager->GetDriverCount() - 1; i >= 0; --i)
        if (GDALDriver* driver = manager->GetDriver(i); !isWanted(driver))
            manager->DeregisterDriver(driver);
}

RasterFile::RasterFile(const SceneFolder& folder) : m_File(folder.imageFile())
{
    struct stat status = {};
    if (::fstat(m_File, &status) != 0)
        throw refusal("the file can't be read");
    if (status.st_size == 0)
        throw refusal("the file is empty");
    m_FileSize = static_cast<std::uint64_t>(status.st_size);
    m_Dataset.reset(GDALDataset::Open(folder.imagePath().c_str(), GDAL_OF_RASTER | GDAL_OF_VERBOSE_ERROR));
    if (!m_Dataset) {
        const std::string reason = "not an image that can be read: " + m_Errors.first();
        if (isNoImage(m_Errors.first()))
            throw NoImage(reason);
        throw refusal(reason);
    }
    if (!m_Errors.none())
        throw refusal("damaged " + std::string(m_Dataset->GetDriverName()) + ": " + m_Errors.first());
    if (bands() == 0 || width() == 0 || height() == 0)
        throw refusal("an image without pixels");
}

bool RasterFile::isOf(const char* driver) const
{
    return EQUAL(m_Dataset->GetDriverName(), driver);
}

image::Image RasterFile::describe()
{
    image::Image facts;
    facts.set_driver(m_Dataset->GetDriverName());
    if (const char* name = m_Dataset->GetDriver()->GetMetadataItem(GDAL_DMD_LONGNAME))
        facts.set_file_format(name);
    facts.set_width(static_cast<std::uint32_t>(width()));
    facts.set_height(static_cast<std::uint32_t>(height()));
    for (GDALRasterBand* band : m_Dataset->GetBands()) {
        image::Band& each = *facts.add_bands();
        each.set_type(GDALGetDataTypeName(band->GetRasterDataType()));
        each.set_color(GDALGetColorInterpretationName(band->GetColorInterpretation()));
        int hasNoData = 0;
        const double noData = band->GetNoDataValue(&hasNoData);
        if (hasNoData != 0)
            each.set_no_data(noData);
    }
    describePlace(*m_Dataset, facts);
    describeScene(*m_Dataset, facts);
    m_Errors.forget(); // of what is missing
    return facts;
}

} // namespace centre
