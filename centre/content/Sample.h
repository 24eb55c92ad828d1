#ifndef LUMO_CENTRE_CONTENT_SAMPLE_H
#define LUMO_CENTRE_CONTENT_SAMPLE_H

#include "centre/content/BulkInsertion.h"

#include <cstdint>
#include <functional>
#include <string>

namespace centre {

class Store;

/// Adds a made-up catalogue: several projects with types of all kinds, `images` images and products in all,
/// most of them satellite images, and control files with points; the same for the same seed. The company must
/// not have its projects yet. Calls `progress` now and then with the number of records so far. Throws Error.
RecordCounts addSample(Store& store, const std::string& companyNo, std::uint32_t images, std::uint64_t seed,
                       const std::function<void(std::uint64_t)>& progress);

} // namespace centre

#endif
