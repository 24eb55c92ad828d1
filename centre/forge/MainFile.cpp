#include "centre/forge/MainFile.h"

#include "centre/base/Text.h"
#include "centre/forge/StoragePlace.h"

#include <exception>
#include <string>

namespace centre {

RecordTexts recordTextsOf(ConnectionPool& pool, ImageReader& images, const User& user, std::uint32_t fileId,
                          const IsCanceled& isCanceled)
{
    RecordTexts texts;
    try {
        const FilePlace place = [&] {
            ConnectionPool::Lease connection(pool);
            return placeOfFile(*connection, user, Access::Read, pool.dataFolder(), fileId);
        }();
        const image::Image image = images.describe(place.folder.open(), place.name, isCanceled);
        if (!image.sensor().empty())
            texts.emplace_back("sensor", image.sensor());
        if (!image.date().empty())
            texts.emplace_back("date", image.date());
        if (image.has_geographic_bounds()) {
            const image::Bounds& bounds = image.geographic_bounds();
            texts.emplace_back("west", numberText(bounds.west()));
            texts.emplace_back("south", numberText(bounds.south()));
            texts.emplace_back("east", numberText(bounds.east()));
            texts.emplace_back("north", numberText(bounds.north()));
        }
    } catch (const std::exception&) { // the record is registered without
    }
    return texts;
}

} // namespace centre
