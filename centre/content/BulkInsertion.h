#ifndef LUMO_CENTRE_CONTENT_BULKINSERTION_H
#define LUMO_CENTRE_CONTENT_BULKINSERTION_H

#include "centre/database/Database.h"
#include "centre/store/RecordWriter.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace centre {

/// How many records of each kind were added, by the kind's name.
using RecordCounts = std::map<std::string, std::uint64_t>;

/// Adds many records in one transaction, and rolls it back unless `finish` is called.
class BulkInsertion
{
public:
    BulkInsertion(Database& database, const std::function<void(std::uint64_t)>& progress);

    std::uint32_t add(const RecordKind& kind, const RecordTexts& texts);
    /// Commits. No record may be added afterwards.
    RecordCounts finish();

private:
    Database& m_Database;
    const std::function<void(std::uint64_t)>& m_Progress;
    std::optional<Transaction> m_Transaction;
    RecordWriter m_Writer;
    std::map<const RecordKind*, std::uint64_t> m_Counts;
    std::uint64_t m_Added = 0;
};

/// Returns "28 records (project 1, type 2, sat 25)", in the order of the kinds; "0 records".
std::string countsText(const RecordCounts& counts);

} // namespace centre

#endif
