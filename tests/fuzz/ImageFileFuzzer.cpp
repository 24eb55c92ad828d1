// Image files, of the formats of GDAL: read or refused, by a process that may die of them.

#include "centre/base/Error.h"
#include "centre/image/ImageReader.h"
#include "tests/fuzz/Require.h"

#include <QTemporaryDir>

#include <chrono>
#include <cstdint>
#include <fstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static centre::ImageReader images({"", 1, {std::chrono::seconds(5), 1 << 30}});
    static const QTemporaryDir place;
    const std::string path = place.path().toStdString();
    std::ofstream(path + "/image", std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    const bulkhaul::Folder folder = bulkhaul::Folder::open(path);
    try {
        const centre::image::Image image = images.check(folder, "image");
        require(image.width() > 0 && image.height() > 0 && image.bands_size() > 0);
        require(image.footprint_size() % 2 == 0);
        require(!images.quickLook(folder, "image", 64).data().empty());
    } catch (const centre::Error&) { // refused
    }
    return 0;
}
