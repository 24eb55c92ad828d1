#include "centre/content/BulkInsertion.h"

#include "centre/base/Text.h"

namespace centre {

namespace {

// Enough to build the indexes of millions of records without a disk access for each.
constexpr char kLargeCache[] = "PRAGMA cache_size = -262144"; // KiB
constexpr std::uint64_t kProgressStep = 10000;

} // namespace

BulkInsertion::BulkInsertion(SQLite::Database& database, const std::function<void(std::uint64_t)>& progress)
    : m_Database(database), m_Progress(progress), m_Writer(database, Origin::Operator)
{
    database.exec(kLargeCache);
    m_Transaction.emplace(database, SQLite::TransactionBehavior::IMMEDIATE);
}

std::uint32_t BulkInsertion::add(const RecordKind& kind, const RecordTexts& texts)
{
    const std::uint32_t id = m_Writer.add(kind, texts);
    ++m_Counts[&kind];
    if (++m_Added % kProgressStep == 0)
        m_Progress(m_Added);
    return id;
}

RecordCounts BulkInsertion::finish()
{
    m_Transaction->commit();
    // While others read, the log stays long; a later checkpoint shortens it.
    m_Database.tryExec("PRAGMA wal_checkpoint(TRUNCATE)");
    RecordCounts counts;
    for (const auto& [kind, count] : m_Counts)
        counts[kind->name] = count;
    return counts;
}

std::string countsText(const RecordCounts& counts)
{
    std::string kinds;
    std::uint64_t all = 0;
    for (const RecordKind& kind : recordKinds())
        if (const auto count = counts.find(kind.name); count != counts.end()) {
            kinds += (kinds.empty() ? " (" : ", ") + kind.name + " " + std::to_string(count->second);
            all += count->second;
        }
    return counted(all, "record") + (kinds.empty() ? "" : kinds + ")");
}

} // namespace centre
