#include "centre/forge/ImageFile.h"

#include "centre/forge/ImageFormats.h"
#include "centre/store/Error.h"

#include <charconv>
#include <iterator>
#include <memory>
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

ImageFacts readImage(OpenFile file, const google::protobuf::RpcController& call)
{
    std::string signature(kSignature, '\0');
    const ssize_t read = ::pread(file.handle.get(), signature.data(), signature.size(), 0);
    signature.resize(read > 0 ? static_cast<std::size_t>(read) : 0);
    for (const std::string& tiff :
         {std::string("II*\0", 4), std::string("MM\0*", 4), std::string("II+\0", 4), std::string("MM\0+", 4)})
        if (startsWith(signature, tiff))
            return readTiff(std::move(file.handle), file.size, call);
    const bool isJpeg = startsWith(signature, "\xFF\xD8\xFF");
    if (!isJpeg && !startsWith(signature, "\x89PNG\r\n\x1A\n"))
        throw Error(ExitCode::Failed, file.size == 0 ? "the file is empty" : "no TIFF, JPEG or PNG image");
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(::fdopen(file.handle.get(), "rb"),
                                                                 &std::fclose);
    if (!stream)
        throw Error(ExitCode::Failed, "the file can't be read");
    file.handle.release();
    return isJpeg ? readJpeg(stream.get(), call) : readPng(stream.get(), call);
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
