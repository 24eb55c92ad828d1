#include "centre/database/SqliteDatabase.h"

#include "centre/database/SqliteStatement.h"

#include <SQLiteCpp/Backup.h>
#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <sqlite3.h>

#include <exception>

namespace centre {

namespace {

constexpr int kApplicationId = 0x4C554D4F; // "LUMO", so that a foreign database is never taken for ours
constexpr int kBusyTimeoutMilliseconds = 10000;
constexpr int kOneThread = SQLITE_OPEN_NOMUTEX; // at a time: no lock around every column that is read
// Enough to build the indexes of millions of records without a disk access for each.
constexpr char kLargeCache[] = "PRAGMA cache_size = -262144"; // KiB

int flagsOf(SqliteDatabase::Open open)
{
    switch (open) {
    case SqliteDatabase::Open::ReadOnly:
        return SQLite::OPEN_READONLY;
    case SqliteDatabase::Open::ReadWrite:
        return SQLite::OPEN_READWRITE;
    default:
        return SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE;
    }
}

std::string sqliteWantedIds(const std::string& parameter)
{
    return "json_each(" + parameter + ")";
}

/// Searches the index of the bounds, which rounds them outward.
std::string sqliteInBounds(const std::string& table, const std::string&)
{
    return "SELECT id FROM (SELECT 0 AS turn UNION ALL SELECT 360 UNION ALL SELECT -360) CROSS JOIN " +
           table +
           "_bounds WHERE west <= :bound_c + turn AND east >= :bound_a + turn"
           " AND south <= :bound_d AND north >= :bound_b ";
}

void answerTextOfId(sqlite3_context* context, int, sqlite3_value** arguments)
{
    try {
        const auto& function = *static_cast<const Database::TextOfId*>(::sqlite3_user_data(context));
        if (const std::string* text =
                function(static_cast<std::uint32_t>(::sqlite3_value_int64(arguments[0]))))
            ::sqlite3_result_text(context, text->data(), static_cast<int>(text->size()), SQLITE_TRANSIENT);
    } catch (const std::exception& exception) {
        ::sqlite3_result_error(context, exception.what(), -1);
    }
}

} // namespace

SqliteDatabase::SqliteDatabase(const std::string& file, Open open) : m_File(file)
{
    withSqliteErrors([&] {
        m_Database = std::make_unique<SQLite::Database>(file, flagsOf(open) | kOneThread);
        m_Database->setBusyTimeout(kBusyTimeoutMilliseconds);
        m_Database->exec("PRAGMA foreign_keys = ON");
        m_Database->exec("PRAGMA synchronous = FULL");
        m_Database->execAndGet("PRAGMA application_id"); // the first statement that reads the file
    });
}

SqliteDatabase::~SqliteDatabase() = default;

std::unique_ptr<Statement> SqliteDatabase::prepare(const std::string& sql, const ParameterTypes&)
{
    return std::make_unique<SqliteStatement>(*m_Database, sql);
}

std::unique_ptr<Statement> SqliteDatabase::prepareList(const std::string& sql, const ParameterTypes& types)
{
    return prepare(sql, types);
}

void SqliteDatabase::execute(const std::string& sql)
{
    withSqliteErrors([&] { m_Database->exec(sql); });
}

const Dialect& SqliteDatabase::dialect() const
{
    static const Dialect dialect = {"CROSS JOIN", sqliteWantedIds, sqliteInBounds, true};
    return dialect;
}

int SqliteDatabase::version()
{
    const int application = std::stoi(value("PRAGMA application_id"));
    const int version = std::stoi(value("PRAGMA user_version"));
    if (application == kApplicationId || (application == 0 && version == 0))
        return version;
    throw DatabaseError(DatabaseError::Kind::NotADatabase, m_File + " is a database of another program");
}

void SqliteDatabase::setVersion(int version)
{
    execute("PRAGMA application_id = " + std::to_string(kApplicationId));
    execute("PRAGMA user_version = " + std::to_string(version));
}

/// The number changes with each commit, of whatever process. There is none before the connection has read it
/// and after the connection's own uncommitted change.
std::optional<std::uint64_t> SqliteDatabase::state()
{
    sqlite3* const database = m_Database->getHandle();
    unsigned int version = 0;
    if (::sqlite3_txn_state(database, "main") != SQLITE_TXN_READ ||
        ::sqlite3_file_control(database, "main", SQLITE_FCNTL_DATA_VERSION, &version) != SQLITE_OK)
        return std::nullopt;
    return version;
}

void SqliteDatabase::holdState()
{
    withSqliteErrors([&] {
        if (!m_Hold) // reads nothing but the state of the database
            m_Hold = std::make_unique<SQLite::Statement>(*m_Database, "PRAGMA data_version");
        m_Hold->executeStep();
    });
}

void SqliteDatabase::releaseState() noexcept
{
    m_Hold->tryReset();
}

void SqliteDatabase::define(const char* name, const TextOfId& function)
{
    withSqliteErrors([&] {
        m_Database->createFunction(name, 1, false, new TextOfId(function), answerTextOfId, nullptr, nullptr,
                                   [](void* known) { delete static_cast<TextOfId*>(known); });
    });
}

void SqliteDatabase::beginBulk()
{
    execute(kLargeCache);
}

/// While others read, the log stays long; a later checkpoint shortens it.
void SqliteDatabase::endBulk() noexcept
{
    m_Database->tryExec("PRAGMA wal_checkpoint(TRUNCATE)");
}

void SqliteDatabase::copyFrom(SqliteDatabase& other)
{
    withSqliteErrors([&] {
        SQLite::Backup backup(*m_Database, *other.m_Database);
        backup.executeStep(-1); // all at once: in steps, it would begin anew after each change
    });
}

void SqliteDatabase::begin()
{
    execute("BEGIN IMMEDIATE");
}

void SqliteDatabase::commit()
{
    execute("COMMIT");
}

void SqliteDatabase::rollback() noexcept
{
    m_Database->tryExec("ROLLBACK");
}

} // namespace centre
