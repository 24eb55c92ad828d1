#include "centre/forge/ImageFile.h"

#include "centre/base/Error.h"
#include "centre/forge/ImageFormats.h"

#include <charconv>
#include <iterator>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace centre {

namespace {

constexpr std::size_t kSignature = 8;

bool startsWith(const std::string& text, const std::string& start)
{
    return text.rfind(start, 0) == 0;
}

/// The shortest text that is read as the same number.
std::string numberText(double value)
{
    char digits[32];
    return {std::begin(digits), std::to_chars(std::begin(digits), std::end(digits), value).ptr};
}

} // namespace

ImageFacts readImage(bulkhaul::FileHandle file, const IsCanceled& isCanceled)
{
    struct stat status = {};
    if (::fstat(file.get(), &status) != 0)
        throw refusal("the file can't be read");
    const auto size = static_cast<std::uint64_t>(status.st_size);
    std::string signature(kSignature, '\0');
    const ssize_t read = ::pread(file.get(), signature.data(), signature.size(), 0);
    signature.resize(read > 0 ? static_cast<std::size_t>(read) : 0);
    for (const std::string& tiff :
         {std::string("II*\0", 4), std::string("MM\0*", 4), std::string("II+\0", 4), std::string("MM\0+", 4)})
        if (startsWith(signature, tiff))
            return readTiff(std::move(file), size, isCanceled);
    const bool isJpeg = startsWith(signature, "\xFF\xD8\xFF");
    if (!isJpeg && !startsWith(signature, "\x89PNG\r\n\x1A\n"))
        throw refusal(size == 0 ? "the file is empty" : "not a TIFF, JPEG or PNG image");
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(::fdopen(file.get(), "rb"), &std::fclose);
    if (!stream)
        throw refusal("the file can't be read");
    file.release();
    return isJpeg ? readJpeg(stream.get(), isCanceled) : readPng(stream.get(), isCanceled);
}

std::string formatText(const ImageFacts& facts)
{
    return facts.format + " " + std::to_string(facts.width) + "x" + std::to_string(facts.height) + "x" +
           std::to_string(facts.bands);
}

std::string georeferenceText(const ImageFacts& facts)
{
    if (!facts.georeference)
        return {};
    const ImageFacts::Georeference& place = *facts.georeference;
    return place.system + " west " + numberText(place.west) + " south " + numberText(place.south) + " east " +
           numberText(place.east) + " north " + numberText(place.north);
}

} // namespace centre
