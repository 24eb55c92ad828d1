// Metadata files of scenes: each reader reads them or refuses them.

#include "centre/base/Error.h"
#include "centre/image/process/SceneMetadata.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string content(reinterpret_cast<const char*>(data), size);
    const auto read = [&content](const auto& reader) {
        try {
            reader(content);
        } catch (const centre::Error&) { // refused
        }
    };
    read(centre::readSpot5Dim);
    read(centre::readSpot6Dim);
    read(centre::readAlosSummary);
    read(centre::readAdsSup);
    return 0;
}
