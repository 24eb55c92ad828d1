#ifndef LUMO_CENTRE_CONTENT_BULKINSERTION_H
#define LUMO_CENTRE_CONTENT_BULKINSERTION_H

#include "centre/store/RecordWriter.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace centre {

/// How many records of each kind were added, by the kind's name.
using RecordCounts = std::map<std::string, std::uint64_t>;

/// Many records in one transaction, which is rolled back unless it is finished.
class BulkInsertion
{
public:
    BulkInsertion(SQLite::Database& database, const std::function<void(std::uint64_t)>& progress);

    std::uint32_t add(const RecordKind& kind, const RecordTexts& texts);
    /// Commits; nothing may be added after it.
    RecordCounts finish();

private:
    SQLite::Database& m_Database;
    const std::function<void(std::uint64_t)>& m_Progress;
    std::optional<SQLite::Transaction> m_Transaction;
    RecordWriter m_Writer;
    std::map<const RecordKind*, std::uint64_t> m_Counts;
    std::uint64_t m_Added = 0;
};

/// "1 project, 2 type, 25 sat", in the order of the kinds; "nothing".
std::string countsText(const RecordCounts& counts);

} // namespace centre

#endif
