#include "centre/content/Copy.h"

#include "centre/base/Error.h"
#include "centre/database/Database.h"
#include "centre/store/RecordKinds.h"
#include "centre/store/Schema.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace centre {

namespace {

constexpr std::uint64_t kProgressRows = 1000;

/// Returns tables so that each comes after those that its rows refer to.
std::vector<Table> inOrder(std::vector<Table> tables)
{
    std::vector<Table> ordered;
    const auto isOrdered = [&ordered](const std::string& name) {
        return std::any_of(ordered.begin(), ordered.end(),
                           [&name](const Table& table) { return table.name == name; });
    };
    while (!tables.empty()) {
        const auto next = std::find_if(tables.begin(), tables.end(), [&](const Table& table) {
            return std::all_of(table.references.begin(), table.references.end(), isOrdered);
        });
        if (next == tables.end())
            throw std::logic_error("the tables refer to each other in a circle");
        ordered.push_back(std::move(*next));
        tables.erase(next);
    }
    return ordered;
}

std::string selectionOf(const Table& table)
{
    std::string columns;
    for (const auto& [name, type] : table.columns)
        columns += (columns.empty() ? "\"" : ", \"") + name + "\"";
    return "SELECT " + columns + " FROM \"" + table.name + "\"";
}

class CatalogueCopy
{
public:
    CatalogueCopy(Database& from, Database& to, const std::function<void(std::uint64_t)>& progress)
        : m_From(from), m_To(to), m_Progress(progress)
    {
    }

    std::uint64_t copy(const Table& table)
    {
        std::uint64_t count = 0;
        const auto rows = m_From.prepareList(selectionOf(table), {});
        const auto writer = m_To.writeRows(table);
        while (rows->step()) {
            writer->add(*rows);
            ++count;
            if (++m_Rows % kProgressRows == 0)
                m_Progress(m_Rows);
        }
        writer->finish();
        const std::string written = m_To.value("SELECT count(*) FROM \"" + table.name + "\"");
        if (written != std::to_string(count))
            throw Error(ExitCode::Failed, "of table " + table.name + " " + std::to_string(count) +
                                              " rows were read, and " + written + " are there");
        if (!table.identity.empty())
            followIdentifiers(table);
        return count;
    }

private:
    /// Has the next identifier be one that no row has.
    void followIdentifiers(const Table& table)
    {
        const std::string name = "\"" + table.name + "\"";
        const std::string largest = m_To.value("SELECT max(\"" + table.identity + "\") FROM " + name);
        if (!largest.empty())
            m_To.noteIdentifier(name, table.identity, static_cast<std::uint32_t>(std::stoul(largest)));
    }

    Database& m_From;
    Database& m_To;
    const std::function<void(std::uint64_t)>& m_Progress;
    std::uint64_t m_Rows = 0;
};

/// Fills the tables of bounds, of an engine that has them.
void copyBounds(Database& to)
{
    if (!to.dialect().hasRowIds)
        return;
    for (const RecordKind& kind : recordKinds())
        if (kind.hasType())
            to.execute("INSERT INTO " + kind.name + "_bounds SELECT " + kind.idColumn() +
                       ", west, east, south, north FROM " + kind.name + " WHERE west IS NOT NULL");
}

} // namespace

TableCounts copyCatalogue(const std::string& from, const std::string& to,
                          const std::function<void(std::uint64_t)>& progress)
try {
    const auto source = openUnchanged(from);
    source->keepState();
    const auto target = createDatabase(to);
    target->beginBulk();
    TableCounts counts;
    {
        Transaction transaction(*target);
        target->deferReferences();
        createSchema(*target);
        CatalogueCopy copy(*source, *target, progress);
        for (const Table& table : inOrder(target->tables()))
            counts.emplace_back(table.name, copy.copy(table));
        copyBounds(*target);
        transaction.commit();
    }
    target->endBulk();
    return counts;
} catch (const DatabaseError& error) {
    throw Error(ExitCode::Failed,
                "can't copy " + shownPlace(from) + " to " + shownPlace(to) + ": " + error.what());
}

} // namespace centre
