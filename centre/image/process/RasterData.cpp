#include "centre/base/Error.h"
#include "centre/image/process/RasterFile.h"

#include <cpl_string.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace centre {

namespace {

/// The largest number of pixels of an image whose data is read as a whole.
constexpr std::uint64_t kMostPixelsRead = 1 << 28;
/// The largest block that is read.
constexpr std::uint64_t kLargestBlock = 256 << 20;

/// What a TIFF says of a piece of its data, 0 for one that it leaves out: `item` is BLOCK_OFFSET or
/// BLOCK_SIZE.
std::uint64_t pieceValue(GDALRasterBand& band, const char* item, int column, int row)
{
    const std::string name = std::string(item) + "_" + std::to_string(column) + "_" + std::to_string(row);
    const char* text = band.GetMetadataItem(name.c_str(), "TIFF");
    std::uint64_t value = 0;
    if (text != nullptr)
        std::from_chars(text, text + std::strlen(text), value);
    return value;
}

std::uint64_t piecesOf(int pixels, std::uint64_t block)
{
    return (static_cast<std::uint64_t>(pixels) + block - 1) / block;
}

/// Width and height of the pieces in which the image is kept.
std::pair<std::uint64_t, std::uint64_t> blockOf(GDALDataset& dataset)
{
    int width = 0;
    int height = 0;
    dataset.GetRasterBand(1)->GetBlockSize(&width, &height);
    return {std::max(1, width), std::max(1, height)};
}

bool areBandsApart(GDALDataset& dataset)
{
    const char* interleave = dataset.GetMetadataItem("INTERLEAVE", "IMAGE_STRUCTURE");
    return interleave != nullptr && EQUAL(interleave, "BAND");
}

} // namespace

void RasterFile::requireData()
{
    if (isOf("GTiff"))
        requirePieces();
    if (isOf("JPEG") || isOf("PNG")) {
        readAll();
        if (isOf("PNG"))
            requireEndOfPng();
        return;
    }
    const auto [blockWidth, blockHeight] = blockOf(*m_Dataset);
    const GDALDataType type = m_Dataset->GetRasterBand(1)->GetRasterDataType();
    const int planes = areBandsApart(*m_Dataset) ? 1 : bands();
    if (blockWidth * blockHeight >
        kLargestBlock / static_cast<std::uint64_t>(GDALGetDataTypeSizeBytes(type) * planes))
        return;
    readPiece(1, 0, 0);
    readPiece(bands(), width() - 1, height() - 1);
}

/// Throws unless the strips or tiles of a TIFF lie in the file.
void RasterFile::requirePieces()
{
    constexpr std::uint64_t kLeastOfPiece = 4; // the bytes of a piece's offset
    const auto [blockWidth, blockHeight] = blockOf(*m_Dataset);
    const std::uint64_t columns = piecesOf(width(), blockWidth);
    const std::uint64_t rows = piecesOf(height(), blockHeight);
    const int planes = areBandsApart(*m_Dataset) ? bands() : 1;
    if (columns * rows > m_FileSize / kLeastOfPiece / static_cast<std::uint64_t>(planes))
        throw refusal("damaged TIFF: an impossible number or size of strips or tiles");
    bool allEmpty = true;
    for (int plane = 1; plane <= planes; ++plane)
        for (std::uint64_t i = 0; i < columns * rows; ++i) {
            GDALRasterBand& band = *m_Dataset->GetRasterBand(plane);
            const int column = static_cast<int>(i % columns);
            const int row = static_cast<int>(i / columns);
            const std::uint64_t bytes = pieceValue(band, "BLOCK_SIZE", column, row);
            const std::uint64_t offset = bytes > 0 ? pieceValue(band, "BLOCK_OFFSET", column, row) : 0;
            if (offset > m_FileSize || bytes > m_FileSize - offset)
                throw refusal("cut short: piece " + std::to_string(i + 1) + " of " +
                              std::to_string(columns * rows) + " of its data lies beyond the file's end");
            allEmpty = allEmpty && bytes == 0;
        }
    if (!m_Errors.none())
        throw refusal("damaged TIFF: " + m_Errors.first());
    if (allEmpty)
        throw refusal("damaged TIFF: an image without data");
}

void RasterFile::readPiece(int band, int column, int row)
{
    std::vector<char> pixel(sizeof(double) * 2);
    GDALRasterBand* from = m_Dataset->GetRasterBand(band);
    const CPLErr result = from->RasterIO(GF_Read, column, row, 1, 1, pixel.data(), 1, 1,
                                         from->GetRasterDataType(), 0, 0, nullptr);
    if (result != CE_None || !m_Errors.none())
        throw refusal(std::string("damaged ") + m_Dataset->GetDriverName() + ": " + m_Errors.first());
}

/// Reads each row, of the smallest of the sizes that a JPEG can be decoded at.
void RasterFile::readAll()
{
    if (static_cast<std::uint64_t>(width()) * static_cast<std::uint64_t>(height()) > kMostPixelsRead)
        return;
    GDALRasterBand* band = m_Dataset->GetRasterBand(1);
    if (isOf("JPEG") && band->GetOverviewCount() > 0)
        band = band->GetOverview(band->GetOverviewCount() - 1);
    std::vector<char> row(static_cast<std::size_t>(band->GetXSize()) *
                          GDALGetDataTypeSizeBytes(band->GetRasterDataType()));
    for (int i = 0; i < band->GetYSize(); ++i) {
        const CPLErr result = band->RasterIO(GF_Read, 0, i, band->GetXSize(), 1, row.data(), band->GetXSize(),
                                             1, band->GetRasterDataType(), 0, 0, nullptr);
        if (result == CE_None && m_Errors.none())
            continue;
        // A progressive image that would take too much memory is not damaged: only its header is read.
        if (m_Errors.first().find("would require libjpeg to allocate") != std::string::npos)
            return;
        throw refusal(std::string("damaged ") + m_Dataset->GetDriverName() + ": " + m_Errors.first());
    }
}

/// Throws unless all chunks of a PNG lie in the file: GDAL does not read those after the pixels.
void RasterFile::requireEndOfPng() const
{
    constexpr std::uint64_t kSignature = 8;
    constexpr std::uint64_t kAroundData = 12; // length, type, checksum
    const std::string end("\0\0\0\0IEND\xAE\x42\x60\x82", kAroundData);
    std::string chunk(kAroundData, '\0');
    for (std::uint64_t at = kSignature; at + kAroundData <= m_FileSize;) {
        if (::pread(m_File, chunk.data(), chunk.size(), static_cast<off_t>(at)) !=
            static_cast<ssize_t>(chunk.size()))
            break;
        if (chunk == end)
            return;
        std::uint64_t length = 0;
        for (int i = 0; i < 4; ++i)
            length = length << 8 | static_cast<unsigned char>(chunk[static_cast<std::size_t>(i)]);
        at += kAroundData + length;
    }
    throw refusal("damaged PNG: cut short");
}

} // namespace centre
