#ifndef LUMO_CENTRE_IMAGE_RASTERFILE_H
#define LUMO_CENTRE_IMAGE_RASTERFILE_H

#include "centre/image/process/GdalErrors.h"
#include "centre/image/process/SceneFolder.h"
#include "image/image_process.pb.h"

#include <gdal_priv.h>

#include <memory>

namespace centre {

/// Registers the formats of GDAL that read a single file or those beside it, and bounds what it may use.
void setUpGdal();

/// An image that GDAL has open. Functions throw Error(Failed) with the reason.
class RasterFile
{
public:
    /// The folder outlives the object.
    explicit RasterFile(const SceneFolder& folder);

    /// Returns what the header and the metadata say.
    image::Image describe();
    /// Throws unless the data is there and as much of it as is read is whole.
    void requireData();
    /// Makes a JPEG of an image in color, a PNG of any other. Each side has at most `longestSide` pixels.
    image::Picture quickLook(unsigned longestSide);

private:
    struct Close
    {
        void operator()(GDALDataset* dataset) const { GDALClose(dataset); }
    };

    void requirePieces();
    void readPiece(int band, int column, int row);
    void readAll();
    void requireEndOfPng() const;
    bool isOf(const char* driver) const;
    int bands() const { return m_Dataset->GetRasterCount(); }
    int width() const { return m_Dataset->GetRasterXSize(); }
    int height() const { return m_Dataset->GetRasterYSize(); }

    GdalErrors m_Errors;
    std::unique_ptr<GDALDataset, Close> m_Dataset;
    int m_File; ///< of the folder
    std::uint64_t m_FileSize = 0;
};

} // namespace centre

#endif
