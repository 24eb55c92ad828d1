#include "centre/database/PostgresDatabase.h"

#include <libpq-fe.h>

#include <array>
#include <charconv>
#include <map>

namespace centre {

namespace {

constexpr std::size_t kLargestPart = std::size_t(1) << 20; // that is sent at once

ValueType postgresTypeOf(const std::string& name)
{
    static const std::map<std::string, ValueType> types = {
        {"double precision", ValueType::Real}, {"text", ValueType::Text}, {"bytea", ValueType::Bytes}};
    const auto type = types.find(name);
    return type == types.end() ? ValueType::Integer : type->second;
}

/// Appends a text in the form of COPY.
void appendText(std::string& rows, std::string_view text)
{
    for (const char character : text)
        switch (character) {
        case '\\':
            rows += "\\\\";
            break;
        case '\t':
            rows += "\\t";
            break;
        case '\n':
            rows += "\\n";
            break;
        case '\r':
            rows += "\\r";
            break;
        default:
            rows += character;
        }
}

void appendBytes(std::string& rows, std::string_view bytes)
{
    constexpr char digits[] = "0123456789abcdef";
    rows += "\\\\x";
    for (const char byte : bytes) {
        rows += digits[static_cast<unsigned char>(byte) >> 4U];
        rows += digits[static_cast<unsigned char>(byte) & 15U];
    }
}

class CopyWriter : public RowWriter
{
public:
    CopyWriter(PostgresDatabase& database, const Table& table) : m_Database(database), m_Table(table)
    {
        std::string columns;
        for (const auto& [name, type] : table.columns)
            columns += (columns.empty() ? "\"" : ", \"") + name + "\"";
        const std::string sql = "COPY \"" + table.name + "\"(" + columns + ") FROM STDIN";
        PostgresResult result(::PQexec(database.connection(), sql.c_str()));
        if (::PQresultStatus(result.get()) != PGRES_COPY_IN)
            m_Database.check(result.release());
    }

    void add(Statement& row) override
    {
        for (std::size_t column = 0; column < m_Table.columns.size(); ++column) {
            m_Rows += column == 0 ? "" : "\t";
            append(row, static_cast<int>(column), m_Table.columns[column].second);
        }
        m_Rows += '\n';
        if (m_Rows.size() >= kLargestPart)
            send();
    }

    void finish() override
    {
        send();
        if (::PQputCopyEnd(m_Database.connection(), nullptr) != 1)
            m_Database.check(nullptr);
        PostgresResult result = m_Database.check(::PQgetResult(m_Database.connection()));
        while (PGresult* more = ::PQgetResult(m_Database.connection()))
            result = m_Database.check(more);
    }

private:
    void append(Statement& row, int column, ValueType type)
    {
        if (type == ValueType::Real) {
            if (const auto number = row.real(column)) {
                std::array<char, 32> text = {};
                char* const end = std::to_chars(text.data(), text.data() + text.size(), *number).ptr;
                m_Rows.append(text.data(), end);
                return;
            }
        } else if (type == ValueType::Bytes) {
            if (const auto bytes = row.bytes(column))
                return appendBytes(m_Rows, *bytes);
        } else if (const auto text = row.text(column)) {
            return appendText(m_Rows, *text);
        }
        m_Rows += "\\N";
    }

    void send()
    {
        if (::PQputCopyData(m_Database.connection(), m_Rows.data(), static_cast<int>(m_Rows.size())) != 1)
            m_Database.check(nullptr);
        m_Rows.clear();
    }

    PostgresDatabase& m_Database;
    const Table m_Table;
    std::string m_Rows; ///< that were not sent yet
};

constexpr char kPostgresColumns[] =
    "SELECT relname, attname, format_type(atttypid, NULL), attidentity <> '' FROM pg_class"
    " JOIN pg_attribute ON attrelid = pg_class.oid WHERE relkind = 'r' AND relname <> 'lumo_centre'"
    " AND relnamespace = CAST(CAST(current_schema() AS text) AS regnamespace) AND attnum > 0"
    " AND NOT attisdropped AND attgenerated = '' ORDER BY relname, attnum";
constexpr char kPostgresReferences[] =
    "SELECT DISTINCT own.relname, other.relname FROM pg_constraint JOIN pg_class AS own ON own.oid = conrelid"
    " JOIN pg_class AS other ON other.oid = confrelid WHERE contype = 'f' AND conrelid <> confrelid"
    " AND own.relnamespace = CAST(CAST(current_schema() AS text) AS regnamespace)";

} // namespace

std::vector<Table> PostgresDatabase::tables()
{
    const auto columns = prepare(kPostgresColumns, {});
    std::vector<Table> tables;
    while (columns->step()) {
        if (tables.empty() || tables.back().name != columns->string(0))
            tables.push_back({columns->string(0), {}, {}, {}});
        tables.back().columns.emplace_back(columns->string(1), postgresTypeOf(columns->string(2)));
        if (columns->id(3) != 0)
            tables.back().identity = columns->string(1);
    }
    const auto references = prepare(kPostgresReferences, {});
    while (references->step())
        for (Table& table : tables)
            if (table.name == references->string(0))
                table.references.push_back(references->string(1));
    return tables;
}

std::unique_ptr<RowWriter> PostgresDatabase::writeRows(const Table& table)
{
    return std::make_unique<CopyWriter>(*this, table);
}

} // namespace centre
