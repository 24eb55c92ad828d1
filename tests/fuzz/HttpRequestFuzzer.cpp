// What of a request over HTTP is parsed here: the components of a path, and a range of a file. A component is
// a name that can't lead elsewhere; a range lies within the file.

#include "centre/http/FileResponse.h"
#include "centre/http/RequestText.h"
#include "lumo/components/platform/Utf8.h"
#include "tests/fuzz/Require.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (const auto components = centre::splitUrlPath(text))
        for (const std::string& each : *components) {
            require(!each.empty() && each != "." && each != "..");
            require(each.find('/') == std::string::npos && each.find('\0') == std::string::npos);
            require(platform::isUtf8(each));
        }
    for (const std::uint64_t fileSize :
         {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{1000}, UINT64_MAX}) {
        const centre::ByteRange range = centre::parseRange("bytes=" + text, fileSize);
        if (range.kind == centre::ByteRange::Kind::Part)
            require(range.size > 0 && range.offset < fileSize && range.size <= fileSize - range.offset);
    }
    centre::isHost(text);
    return 0;
}
