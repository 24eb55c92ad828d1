#include "centre/content/BulkInsertion.h"

#include "centre/base/Text.h"

namespace centre {

namespace {

constexpr std::uint64_t kProgressStep = 10000;

} // namespace

BulkInsertion::BulkInsertion(Database& database, const std::function<void(std::uint64_t)>& progress)
    : m_Database(database), m_Progress(progress), m_Writer(database, Origin::Operator)
{
    database.beginBulk();
    m_Transaction.emplace(database);
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
    m_Writer.finish();
    m_Transaction->commit();
    m_Database.endBulk();
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
