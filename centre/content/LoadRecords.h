#ifndef LUMO_CENTRE_CONTENT_LOADRECORDS_H
#define LUMO_CENTRE_CONTENT_LOADRECORDS_H

#include "centre/content/BulkInsertion.h"

#include <cstdint>
#include <functional>
#include <istream>
#include <string>

namespace centre {

class Store;

/// Reads records of the image catalogue, a JSON object on each line, into the catalogue: all of them or
/// none. Skips empty lines. Calls `progress` now and then with the number of records so far.
/// Throws Error whose text begins with `name` and the line's number.
RecordCounts loadRecords(Store& store, std::istream& lines, const std::string& name,
                         const std::function<void(std::uint64_t)>& progress);

} // namespace centre

#endif
