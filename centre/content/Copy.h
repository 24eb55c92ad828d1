#ifndef LUMO_CENTRE_CONTENT_COPY_H
#define LUMO_CENTRE_CONTENT_COPY_H

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace centre {

/// How many rows each table has, in the order in which they were copied.
using TableCounts = std::vector<std::pair<std::string, std::uint64_t>>;

/// Copies a catalogue, each a data folder or a server, with all identifiers and tokens, as it is at one
/// moment; others may use it. The new one is made, and appears whole or not at all. Calls `progress` with the
/// number of rows that were copied. Throws Error for a catalogue whose tables have another version than this
/// program, and a place that is not empty.
TableCounts copyCatalogue(const std::string& from, const std::string& to,
                          const std::function<void(std::uint64_t)>& progress);

} // namespace centre

#endif
