#ifndef LUMO_CENTRE_FORGE_MAINFILE_H
#define LUMO_CENTRE_FORGE_MAINFILE_H

#include "centre/base/Cancellation.h"
#include "centre/image/ImageReader.h"
#include "centre/store/ConnectionPool.h"
#include "centre/store/RecordWriter.h"

#include <cstdint>

namespace centre {

/// Returns what an image file of the storage catalogue says of itself, as texts of a record: `sensor`,
/// `date`, and `west`, `south`, `east`, `north`, as far as it has them; nothing if it can't be read.
RecordTexts recordTextsOf(ConnectionPool& pool, ImageReader& images, const User& user, std::uint32_t fileId,
                          const IsCanceled& isCanceled);

} // namespace centre

#endif
