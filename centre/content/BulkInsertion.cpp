#include "centre/content/BulkInsertion.h"

namespace centre {

namespace {

// So that indexes of millions of records are built without going to the disk for each.
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
    // A reader that is in the way leaves a long log for a later one to shorten.
    m_Database.tryExec("PRAGMA wal_checkpoint(TRUNCATE)");
    RecordCounts counts;
    for (const auto& [kind, count] : m_Counts)
        counts[kind->name] = count;
    return counts;
}

std::string countsText(const RecordCounts& counts)
{
    std::string text;
    for (const RecordKind& kind : recordKinds())
        if (const auto count = counts.find(kind.name); count != counts.end())
            text += (text.empty() ? "" : ", ") + std::to_string(count->second) + " " + kind.name;
    return text.empty() ? "nothing" : text;
}

} // namespace centre
