#include "centre/database/RowInsertion.h"
#include "centre/database/SqliteDatabase.h"

#include <map>

namespace centre {

namespace {

ValueType sqliteTypeOf(const std::string& declared)
{
    static const std::map<std::string, ValueType> types = {
        {"REAL", ValueType::Real}, {"TEXT", ValueType::Text}, {"BLOB", ValueType::Bytes}};
    const auto type = types.find(declared);
    return type == types.end() ? ValueType::Integer : type->second;
}

class SqliteRowWriter : public RowWriter
{
public:
    SqliteRowWriter(Database& database, const Table& table)
        : m_Table(table), m_Insertion(database, head(table), table.columns.size())
    {
    }

    void add(Statement& row) override
    {
        std::vector<RowInsertion::Value> values;
        for (std::size_t column = 0; column < m_Table.columns.size(); ++column)
            values.push_back(value(row, static_cast<int>(column), m_Table.columns[column].second));
        m_Insertion.add(std::move(values));
    }

    void finish() override { m_Insertion.flush(); }

private:
    static std::string head(const Table& table)
    {
        std::string columns;
        for (const auto& [name, type] : table.columns)
            columns += (columns.empty() ? "\"" : ", \"") + name + "\"";
        return "INSERT INTO \"" + table.name + "\"(" + columns + ")";
    }

    static RowInsertion::Value value(Statement& row, int column, ValueType type)
    {
        using Null = RowInsertion::Null;
        if (type == ValueType::Integer)
            if (const auto number = row.integer(column))
                return *number;
        if (type == ValueType::Real)
            if (const auto number = row.real(column))
                return *number;
        if (type == ValueType::Bytes)
            if (auto bytes = row.bytes(column))
                return RowInsertion::Bytes{std::move(*bytes)};
        if (type == ValueType::Text)
            if (const auto text = row.text(column))
                return std::string(*text);
        return Null();
    }

    const Table m_Table;
    RowInsertion m_Insertion;
};

} // namespace

std::vector<Table> SqliteDatabase::tables()
{
    const std::string list = " FROM pragma_table_list AS list JOIN ";
    const std::string known =
        " WHERE list.schema = 'main' AND list.type = 'table' AND list.name NOT LIKE 'sqlite%'";
    const auto columns =
        prepare("SELECT list.name, info.name, info.type" + list + "pragma_table_xinfo(list.name) AS info" +
                    known + " AND info.hidden = 0 ORDER BY list.name, info.cid",
                {});
    std::vector<Table> tables;
    while (columns->step()) {
        if (tables.empty() || tables.back().name != columns->string(0))
            tables.push_back({columns->string(0), {}, {}, {}});
        tables.back().columns.emplace_back(columns->string(1), sqliteTypeOf(columns->string(2)));
    }
    const auto references =
        prepare("SELECT DISTINCT list.name, keys.\"table\"" + list +
                    "pragma_foreign_key_list(list.name) AS keys" + known + " AND keys.\"table\" <> list.name",
                {});
    while (references->step())
        for (Table& table : tables)
            if (table.name == references->string(0))
                table.references.push_back(references->string(1));
    return tables;
}

std::unique_ptr<RowWriter> SqliteDatabase::writeRows(const Table& table)
{
    return std::make_unique<SqliteRowWriter>(*this, table);
}

/// Holds until the transaction ends.
void SqliteDatabase::deferReferences()
{
    execute("PRAGMA defer_foreign_keys = ON");
}

void SqliteDatabase::keepState()
{
    execute("PRAGMA query_only = ON");
    execute("BEGIN");
    value("PRAGMA user_version"); // the first statement that reads fixes the state
}

} // namespace centre
