#include "centre/forge/MainFile.h"

#include "centre/forge/StoragePlace.h"
#include "centre/image/ImageTexts.h"

#include <exception>

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
        texts = searchTexts(images.describe(place.folder.open(), place.name, isCanceled));
    } catch (const std::exception&) { // the record is registered without
    }
    return texts;
}

} // namespace centre
