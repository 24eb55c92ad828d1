#include "centre/base/Cancellation.h"
#include "centre/base/Error.h"
#include "centre/forge/ImageFormats.h"

#include <csetjmp>

#include <jpeglib.h>

#include <jerror.h>

namespace centre {

namespace {

constexpr int kMostScans = 100; // each goes over the whole image; ten are usual

/// The library's error handling leaves by a jump, so no function below it may have an object with a
/// destructor.
struct Errors
{
    jpeg_error_mgr manager;
    std::jmp_buf place;
    char text[JMSG_LENGTH_MAX];
};

[[noreturn]] void leave(j_common_ptr image)
{
    auto* errors = reinterpret_cast<Errors*>(image->err);
    (*image->err->format_message)(image, errors->text);
    std::longjmp(errors->place, 1); // NOLINT(cert-err52-cpp): the library's way out
}

/// Leaves at those warnings that mean damaged or missing data.
void leaveAtLoss(j_common_ptr image, int level)
{
    const int code = image->err->msg_code;
    if (level < 0 && (code == JWRN_JPEG_EOF || code == JWRN_HIT_MARKER || code == JWRN_HUFF_BAD_CODE ||
                      code == JWRN_MUST_RESYNC))
        leave(image);
}

/// The library calls its progress monitor again and again while it decodes.
struct Progress
{
    jpeg_progress_mgr manager;
    const IsCanceled* isCanceled;
};

void leaveIfTooLong(j_common_ptr image)
{
    auto* errors = reinterpret_cast<Errors*>(image->err);
    const bool tooMany = reinterpret_cast<j_decompress_ptr>(image)->input_scan_number > kMostScans;
    if (!tooMany && !(*reinterpret_cast<Progress*>(image->progress)->isCanceled)())
        return;
    static_cast<void>(
        std::snprintf(errors->text, sizeof errors->text, "it has more than %d scans", kMostScans));
    std::longjmp(errors->place, 1); // NOLINT(cert-err52-cpp)
}

/// Reads an image at an eighth of its size. False when it was left, with the reason in `errors`.
bool readAll(jpeg_decompress_struct& image, Errors& errors, Progress& progress, std::FILE* file)
{
    if (setjmp(errors.place) != 0) // NOLINT(cert-err52-cpp)
        return false;
    jpeg_create_decompress(&image);
    image.progress = &progress.manager;
    image.mem->max_memory_to_use = kMostMemory;
    jpeg_stdio_src(&image, file);
    jpeg_read_header(&image, TRUE);
    if (std::uint64_t(image.image_width) * image.image_height > kMostPixelsRead)
        return true;
    image.scale_num = 1;
    image.scale_denom = DCTSIZE;
    jpeg_start_decompress(&image);
    JSAMPARRAY row = (*image.mem->alloc_sarray)(reinterpret_cast<j_common_ptr>(&image), JPOOL_IMAGE,
                                                image.output_width * image.output_components, 1);
    while (image.output_scanline < image.output_height)
        jpeg_read_scanlines(&image, row, 1);
    jpeg_finish_decompress(&image);
    return true;
}

} // namespace

ImageFacts readJpeg(std::FILE* file, const IsCanceled& isCanceled)
{
    Errors errors = {};
    jpeg_decompress_struct image = {};
    image.err = jpeg_std_error(&errors.manager);
    errors.manager.error_exit = leave;
    errors.manager.emit_message = leaveAtLoss;
    Progress progress = {{}, &isCanceled};
    progress.manager.progress_monitor = leaveIfTooLong;
    // A progressive image that would take too much memory is not damaged: only its header is read.
    const bool whole =
        readAll(image, errors, progress, file) || errors.manager.msg_code == JERR_NO_BACKING_STORE;
    ImageFacts facts{"JPEG", image.image_width, image.image_height,
                     static_cast<std::uint32_t>(image.num_components), std::nullopt};
    jpeg_destroy_decompress(&image);
    requireNotCanceled(isCanceled);
    if (!whole)
        throw refusal(std::string("damaged JPEG: ") + errors.text);
    return facts;
}

} // namespace centre
