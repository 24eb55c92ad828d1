#include "centre/base/Cancellation.h"
#include "centre/base/Error.h"
#include "centre/forge/ImageFormats.h"

#include <csetjmp>
#include <cstring>

#include <png.h>

namespace centre {

namespace {

constexpr std::size_t kLongestError = 199;

/// The library's error handling leaves by a jump, so no function below it may have an object with a
/// destructor.
[[noreturn]] void leave(png_structp png, png_const_charp text)
{
    std::strncat(static_cast<char*>(png_get_error_ptr(png)), text, kLongestError);
    png_longjmp(png, 1);
}

void drop(png_structp, png_const_charp)
{
}

struct Header
{
    png_uint_32 width = 0;
    png_uint_32 height = 0;
    png_byte bands = 0;
};

/// Reads an image. The caller frees `row`, which png_malloc allocates. Returns false after an error.
bool readAll(png_structp png, png_infop info, std::FILE* file, const IsCanceled& isCanceled, Header& header,
             png_bytep& row)
{
    if (setjmp(png_jmpbuf(png)) != 0) // NOLINT(cert-err52-cpp): the library's way out
        return false;
    png_init_io(png, file);
    png_read_info(png, info);
    header = {png_get_image_width(png, info), png_get_image_height(png, info), png_get_channels(png, info)};
    if (std::uint64_t(header.width) * header.height > kMostPixelsRead)
        return true;
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    row = static_cast<png_bytep>(png_malloc(png, png_get_rowbytes(png, info)));
    for (int pass = 0; pass < passes; ++pass)
        for (png_uint_32 i = 0; i < header.height; ++i) {
            if (isCanceled())
                return false;
            png_read_row(png, row, nullptr);
        }
    png_read_end(png, nullptr);
    return true;
}

} // namespace

ImageFacts readPng(std::FILE* file, const IsCanceled& isCanceled)
{
    char error[kLongestError + 1] = "";
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, error, leave, drop);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    Header header;
    png_bytep row = nullptr;
    const bool whole = info && readAll(png, info, file, isCanceled, header, row);
    if (png)
        png_free(png, row);
    png_destroy_read_struct(&png, &info, nullptr);
    requireNotCanceled(isCanceled);
    if (!whole)
        throw refusal(std::string("damaged PNG: ") + error);
    return {"PNG", header.width, header.height, header.bands, std::nullopt};
}

} // namespace centre
