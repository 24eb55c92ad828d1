// Image files, TIFF, JPEG and PNG: read or refused, within bounded memory.

#include "centre/base/Error.h"
#include "centre/forge/ImageFile.h"
#include "tests/fuzz/Require.h"

#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    bulkhaul::FileHandle file(::memfd_create("image", 0));
    require(::pwrite(file.get(), data, size, 0) == static_cast<ssize_t>(size));
    try {
        const centre::ImageFacts facts = centre::readImage(std::move(file));
        require(facts.width > 0 && facts.height > 0 && facts.bands > 0);
        require(!centre::formatText(facts).empty());
        require(centre::georeferenceText(facts).empty() == !facts.georeference);
    } catch (const centre::Error&) { // refused
    }
    return 0;
}
