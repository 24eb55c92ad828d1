#include "centre/database/SqliteStatement.h"

#include <SQLiteCpp/Column.h>
#include <sqlite3.h>

namespace centre {

DatabaseError databaseError(const SQLite::Exception& exception)
{
    using Kind = DatabaseError::Kind;
    const auto kind = [&exception] {
        switch (exception.getExtendedErrorCode()) {
        case SQLITE_CONSTRAINT_UNIQUE:
            return Kind::Unique;
        case SQLITE_CONSTRAINT_PRIMARYKEY:
        case SQLITE_CONSTRAINT_ROWID:
            return Kind::PrimaryKey;
        case SQLITE_CONSTRAINT_FOREIGNKEY:
            return Kind::ForeignKey;
        case SQLITE_CONSTRAINT_CHECK:
            return Kind::Check;
        default:
            break;
        }
        switch (exception.getErrorCode()) {
        case SQLITE_FULL:
            return Kind::Full;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return Kind::Busy;
        case SQLITE_NOTADB:
            return Kind::NotADatabase;
        default:
            return Kind::Other;
        }
    };
    return {kind(), exception.what()};
}

SqliteStatement::SqliteStatement(const SQLite::Database& database, const std::string& sql)
    : m_Statement(withSqliteErrors([&] { return SQLite::Statement(database, sql); }))
{
}

int SqliteStatement::parameter(const std::string& name) const
{
    return m_Statement.getIndex(name.c_str());
}

int SqliteStatement::parameterCount() const
{
    return m_Statement.getBindParameterCount();
}

int SqliteStatement::columnCount()
{
    return m_Statement.getColumnCount();
}

std::string SqliteStatement::columnName(int column)
{
    return m_Statement.getColumnName(column);
}

void SqliteStatement::bindBytes(int place, std::string_view bytes)
{
    withSqliteErrors([&] { m_Statement.bind(place, bytes.data(), static_cast<int>(bytes.size())); });
}

void SqliteStatement::bindTextInPlace(int place, const std::string& text)
{
    withSqliteErrors([&] { m_Statement.bindNoCopy(place, text); });
}

bool SqliteStatement::step()
{
    return withSqliteErrors([&] { return m_Statement.executeStep(); });
}

int SqliteStatement::run()
{
    return withSqliteErrors([&] { return m_Statement.exec(); });
}

void SqliteStatement::reset() noexcept
{
    m_Statement.tryReset();
}

std::optional<std::int64_t> SqliteStatement::integer(int column)
{
    const SQLite::Column value = withSqliteErrors([&] { return m_Statement.getColumn(column); });
    return value.isNull() ? std::nullopt : std::optional(value.getInt64());
}

std::optional<std::string_view> SqliteStatement::text(int column)
{
    const SQLite::Column value = withSqliteErrors([&] { return m_Statement.getColumn(column); });
    if (value.isNull())
        return std::nullopt;
    const char* text = value.getText(); // before its size, which it may change
    return std::string_view(text, static_cast<std::size_t>(value.getBytes()));
}

std::optional<double> SqliteStatement::real(int column)
{
    const SQLite::Column value = withSqliteErrors([&] { return m_Statement.getColumn(column); });
    return value.isNull() ? std::nullopt : std::optional(value.getDouble());
}

std::optional<std::string> SqliteStatement::bytes(int column)
{
    const SQLite::Column value = withSqliteErrors([&] { return m_Statement.getColumn(column); });
    return value.isNull() ? std::nullopt : std::optional(value.getString());
}

void SqliteStatement::bindNull(int place)
{
    withSqliteErrors([&] { m_Statement.bind(place); });
}

void SqliteStatement::bindInteger(int place, std::int64_t value)
{
    withSqliteErrors([&] { m_Statement.bind(place, value); });
}

void SqliteStatement::bindReal(int place, double value)
{
    withSqliteErrors([&] { m_Statement.bind(place, value); });
}

void SqliteStatement::bindText(int place, std::string_view text)
{
    withSqliteErrors([&] { m_Statement.bind(place, std::string(text)); });
}

void SqliteStatement::bindIdentifiers(int place, const Identifiers& ids)
{
    std::string json = "[";
    for (const std::uint32_t id : ids)
        json += (json.size() > 1 ? "," : "") + std::to_string(id);
    bindText(place, json + "]");
}

} // namespace centre
