#ifndef LUMO_CENTRE_DATABASE_DIALECT_H
#define LUMO_CENTRE_DATABASE_DIALECT_H

#include <string>

namespace centre {

/// The fragments of SQL that differ between the engines. All other SQL runs on both. It has `"user"` in
/// quotes, no functions that one engine lacks, and compares texts by their bytes.
struct Dialect
{
    /// A join that SQLite runs in the order in which it is written; ON or USING may follow.
    std::string orderedJoin;
    /// Returns a table with a row (key, value) for each identifier of a parameter, key in their order.
    std::string (*wantedIds)(const std::string& parameter);
    /// Returns a select of the column `id`: at least those records of a table of bounds that touch the
    /// parameters :bound_a (west), :bound_b (south), :bound_c (east) and :bound_d (north), as they are and a
    /// turn to either side. An AND may follow.
    std::string (*inBounds)(const std::string& table, const std::string& idColumn);
    /// Whether the bounds of a record are in a table of their own, `..._bounds`, and an index ends with the
    /// record's identifier.
    bool hasRowIds;
};

} // namespace centre

#endif
