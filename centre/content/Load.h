#ifndef LUMO_CENTRE_CONTENT_LOAD_H
#define LUMO_CENTRE_CONTENT_LOAD_H

#include <cstdint>
#include <functional>
#include <istream>
#include <map>
#include <string>

namespace centre {

class Store;

/// How many records of each kind were added, by the kind's name.
using RecordCounts = std::map<std::string, std::uint64_t>;

/// Reads records of the image catalogue, a JSON object on each line, into the catalogue: all of them or
/// none. Empty lines are passed over. `progress` is told now and then how many there are so far.
/// Throws Error that begins with `name` and the line's number.
RecordCounts loadRecords(Store& store, std::istream& lines, const std::string& name,
                         const std::function<void(std::uint64_t)>& progress);

/// Adds a made-up catalogue: several projects with types of all kinds, `images` images and products in all,
/// most of them satellite images, and control files with points; the same for the same seed. Its projects
/// must not be there. Throws Error.
RecordCounts addSample(Store& store, const std::string& companyNo, std::uint32_t images, std::uint64_t seed,
                       const std::function<void(std::uint64_t)>& progress);

/// "1 project, 2 type, 25 sat", in the order of the kinds; "nothing".
std::string countsText(const RecordCounts& counts);

} // namespace centre

#endif
