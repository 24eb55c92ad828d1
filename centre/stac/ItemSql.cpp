#include "centre/stac/ItemSql.h"

#include "centre/database/Sql.h"

#include <algorithm>
#include <map>
#include <mutex>

namespace centre {

namespace {

constexpr std::size_t kMostKept = 300;

bool isTitle(const Column& column)
{
    return column.name == "image_name" || column.name == "ctrl_file_name";
}

std::string titleColumn(const RecordKind& kind)
{
    const auto title = std::find_if(kind.columns.begin(), kind.columns.end(), isTitle);
    return title == kind.columns.end() ? "NULL" : kind.name + "." + title->name;
}

const Sql* keptText(const std::string& sql)
{
    static std::mutex mutex;
    static std::map<std::string, Sql> texts;
    const std::lock_guard lock(mutex);
    const auto known = texts.find(sql);
    if (known != texts.end())
        return &known->second;
    return texts.size() < kMostKept ? &texts.try_emplace(sql, sql).first->second : nullptr;
}

/// Selects the identifiers of the page. The + keeps a search of bounds on the identifiers.
std::string idsOfPage(const RecordKind& kind, const Dialect& dialect, const ItemSearch& search,
                      const std::string& filterCondition)
{
    const std::string id = kind.name + "." + kind.idColumn();
    const std::string bounds =
        "AND " + id + " IN (" + dialect.inBounds(kind.name, kind.idColumn()) +
        ") AND south <= :bound_d AND north >= :bound_b AND"
        " (west <= :bound_c AND east >= :bound_a OR west <= :bound_c + 360 AND east >= :bound_a + 360"
        " OR west <= :bound_c - 360 AND east >= :bound_a - 360) ";
    return "SELECT " + id + " FROM " + kind.name + " WHERE " + (search.bounds ? "+" : "") + kind.name +
           ".type_id = :type AND " + id + " > :after " + (search.bounds ? bounds : "") +
           (search.days ? "AND date BETWEEN :first_day AND :last_day " : "") +
           (search.ids ? "AND " + id + " IN (SELECT value FROM " + dialect.wantedIds(":ids") + " AS wanted) "
                       : "") +
           (filterCondition.empty() ? "" : "AND " + filterCondition + " ") + "ORDER BY " + id +
           " LIMIT :limit";
}

} // namespace

std::vector<const Column*> itemFields(const RecordKind& kind)
{
    std::vector<const Column*> fields;
    for (const Column& column : kind.columns)
        if (kind.bean->FindFieldByName(column.name) && column.content != Content::Identifier &&
            !isTitle(column))
            fields.push_back(&column);
    return fields;
}

std::string itemSql(const RecordKind& kind, const Dialect& dialect, const ItemSearch& search,
                    const std::string& filterCondition)
{
    const std::string id = kind.name + "." + kind.idColumn();
    std::string sql = "SELECT " + id + ", west, south, east, north, sensor, date, " + titleColumn(kind) +
                      ", main_file_id, file.name, file.size, file.digest, file.short_text, file.long_text,"
                      " file.parent_id, folder.disk_id";
    for (const Column* field : itemFields(kind))
        sql.append(", ").append(kind.name).append(".").append(field->name);
    return sql + " FROM " + kind.name +
           " LEFT JOIN file ON file.id = main_file_id LEFT JOIN folder ON folder.id = file.parent_id WHERE " +
           id + " IN (" + idsOfPage(kind, dialect, search, filterCondition) + ") ORDER BY " + id;
}

void bindSearch(Statement& statement, const ItemSearch& search, const Statement::Identifiers& ids)
{
    if (search.bounds) {
        bindNamed(statement, ":bound_a", search.bounds->west);
        bindNamed(statement, ":bound_b", search.bounds->south);
        bindNamed(statement, ":bound_c", search.bounds->east);
        bindNamed(statement, ":bound_d", search.bounds->north);
    }
    if (search.days) {
        bindNamed(statement, ":first_day", search.days->first);
        bindNamed(statement, ":last_day", search.days->second);
    }
    if (search.ids)
        bindNamed(statement, ":ids", ids);
}

KeptStatement::KeptStatement(Connection& connection, const std::string& sql)
{
    if (const Sql* kept = keptText(sql)) {
        m_Statement = &connection.statement(*kept);
        return;
    }
    m_Own = connection.database().prepare(sql);
    m_Statement = m_Own.get();
}

} // namespace centre
