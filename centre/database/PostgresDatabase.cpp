#include "centre/database/PostgresDatabase.h"

#include "centre/database/PostgresStatement.h"

#include <libpq-fe.h>

#include <chrono>
#include <cstring>
#include <regex>

namespace centre {

namespace {

using Kind = DatabaseError::Kind;

constexpr int kOldestServer = 150000;
constexpr int kLockOfTables = 0x4C554D4F; // "LUMO"

// The server ends the session of a machine that has gone, and with it its locks, within half a minute. A plan
// may have many branches, which compiling would make slower.
constexpr char kSession[] =
    "SET tcp_keepalives_idle = 10; SET tcp_keepalives_interval = 5; SET tcp_keepalives_count = 3;"
    "SET client_min_messages = error; SET lock_timeout = '10s';"
    " SET default_transaction_isolation = 'read committed'; SET jit = off";

struct State
{
    const char* code; ///< a SQLSTATE or its class
    Kind kind;
};

constexpr State kStates[] = {
    {"23505", Kind::Unique},
    {"23503", Kind::ForeignKey},
    {"23514", Kind::Check},
    {"2200H", Kind::Check},
    {"53100", Kind::Full},
    {"55P03", Kind::Busy},
    {"53300", Kind::Busy},
    {"40001", Kind::Serialization},
    {"40P01", Kind::Serialization},
    {"08", Kind::Lost},
    {"57P", Kind::Lost},
};

Kind kindOf(const char* sqlState, const std::string& constraint)
{
    const std::string_view primary = "_pkey";
    for (const State& state : kStates)
        if (std::strncmp(sqlState, state.code, std::strlen(state.code)) == 0) {
            const bool isPrimary =
                constraint.size() > primary.size() &&
                constraint.compare(constraint.size() - primary.size(), primary.size(), primary) == 0;
            return state.kind == Kind::Unique && isPrimary ? Kind::PrimaryKey : state.kind;
        }
    return Kind::Other;
}

/// Returns a message in one line.
std::string trimmed(const char* message)
{
    std::string text = message;
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    return std::regex_replace(text, std::regex("\\s*\n\\s*"), "; ");
}

std::string postgresWantedIds(const std::string& parameter)
{
    return "(SELECT value, key FROM unnest(" + parameter + ") WITH ORDINALITY AS each(value, key))";
}

/// Searches the index of the boxes, whose operator takes those that nearly touch, too.
std::string postgresInBounds(const std::string& table, const std::string& idColumn)
{
    return "SELECT " + idColumn +
           " AS id FROM (SELECT 0 AS turn UNION ALL SELECT 360 UNION ALL SELECT -360) AS turns JOIN " +
           table +
           " ON bounds && box(point(:bound_a + turn, :bound_b), point(:bound_c + turn, :bound_d))"
           " WHERE true ";
}

struct FreeOptions
{
    void operator()(PQconninfoOption* options) const { ::PQconninfoFree(options); }
};

} // namespace

bool isPostgresUrl(const std::string& text)
{
    return text.rfind("postgresql://", 0) == 0 || text.rfind("postgres://", 0) == 0;
}

std::string shownUrl(const std::string& url)
{
    char* reason = nullptr;
    const std::unique_ptr<PQconninfoOption, FreeOptions> options(::PQconninfoParse(url.c_str(), &reason));
    if (!options) {
        ::PQfreemem(reason); // which may have the password
        throw DatabaseError(Kind::NotADatabase,
                            "the address of the database must be"
                            " postgresql://USER@HOST:PORT/NAME or postgresql:///NAME?host=/FOLDER");
    }
    std::string host;
    std::string port;
    std::string name;
    for (const PQconninfoOption* option = options.get(); option->keyword != nullptr; ++option)
        for (const auto& [keyword, value] : {std::pair("host", &host), {"port", &port}, {"dbname", &name}})
            if (option->val != nullptr && std::strcmp(option->keyword, keyword) == 0)
                *value = option->val;
    if (host.empty() || host[0] == '/')
        return "postgresql:///" + name + (host.empty() ? "" : "?host=" + host);
    return "postgresql://" + host + (port.empty() ? "" : ":" + port) + "/" + name;
}

PostgresDatabase::PostgresDatabase(const std::string& url) : m_Name(shownUrl(url))
{
    const char* const keywords[] = {"dbname",          "fallback_application_name", "client_encoding",
                                    "connect_timeout", "tcp_user_timeout",          nullptr};
    const char* const values[] = {url.c_str(), "lumo-centre", "UTF8", "10", "20000", nullptr};
    m_Connection.reset(::PQconnectdbParams(keywords, values, 1));
    if (!m_Connection)
        throw std::bad_alloc();
    if (::PQstatus(connection()) != CONNECTION_OK)
        throw DatabaseError(Kind::Lost, "can't connect to the database " + m_Name + ": " +
                                            trimmed(::PQerrorMessage(connection())));
    if (::PQserverVersion(connection()) < kOldestServer)
        throw DatabaseError(Kind::NotADatabase,
                            "the server of " + m_Name + " must be PostgreSQL 15 or later");
    if (std::strcmp(::PQparameterStatus(connection(), "server_encoding"), "UTF8") != 0)
        throw DatabaseError(
            Kind::NotADatabase,
            m_Name + " must have the encoding UTF8: createdb --encoding UTF8 --template template0");
    setUp();
}

PostgresDatabase::~PostgresDatabase() = default;

void FreePostgresResult::operator()(pg_result* result) const
{
    ::PQclear(result);
}

void PostgresDatabase::Disconnect::operator()(pg_conn* connection) const
{
    ::PQfinish(connection);
}

void PostgresDatabase::setUp()
{
    ::PQsetNoticeProcessor(
        connection(), [](void*, const char*) {}, nullptr);
    check(::PQexec(connection(), kSession));
}

std::unique_ptr<Statement> PostgresDatabase::prepare(const std::string& sql, const ParameterTypes& types)
{
    return std::make_unique<PostgresStatement>(*this, sql, types, PostgresStatement::Rows::Together);
}

std::unique_ptr<Statement> PostgresDatabase::prepareList(const std::string& sql, const ParameterTypes& types)
{
    return std::make_unique<PostgresStatement>(*this, sql, types, PostgresStatement::Rows::OneByOne);
}

void PostgresDatabase::execute(const std::string& sql)
{
    revive();
    check(::PQexec(connection(), sql.c_str()));
}

void PostgresDatabase::executeTables(const std::string& sql)
{
    static const std::pair<std::regex, const char*> words[] = {
        {std::regex("INTEGER PRIMARY KEY"),
         "BIGINT GENERATED BY DEFAULT AS IDENTITY (MAXVALUE 4294967294) PRIMARY KEY"},
        {std::regex("\\bINTEGER\\b"), "BIGINT"},
        {std::regex("\\bTEXT\\b"), "TEXT COLLATE \"C\""},
        {std::regex("\\bBLOB\\b"), "BYTEA"},
        {std::regex("\\bREAL\\b"), "DOUBLE PRECISION"},
        {std::regex("unixepoch\\(\\)"), "CAST(extract(epoch FROM now()) AS BIGINT)"},
        {std::regex("\\) WITHOUT ROWID"), ")"},
        {std::regex("\\) VIRTUAL"), ") STORED"},
        {std::regex("(TABLE|REFERENCES|ON|FROM|INTO|UPDATE|TO) user\\b"), "$1 \"user\""},
    };
    std::string translated = sql;
    for (const auto& [word, replacement] : words)
        translated = std::regex_replace(translated, word, replacement);
    execute(translated);
}

const Dialect& PostgresDatabase::dialect() const
{
    static const Dialect dialect = {"JOIN", postgresWantedIds, postgresInBounds, false};
    return dialect;
}

int PostgresDatabase::version()
{
    if (value("SELECT to_regclass('lumo_centre')").empty()) {
        if (value("SELECT count(*) FROM pg_tables WHERE schemaname = current_schema()") != "0")
            throw DatabaseError(Kind::NotADatabase, m_Name + " is a database of another program");
        return 0;
    }
    return std::stoi(value("SELECT version FROM lumo_centre"));
}

void PostgresDatabase::setVersion(int version)
{
    execute("CREATE TABLE IF NOT EXISTS lumo_centre (version BIGINT NOT NULL); DELETE FROM lumo_centre;"
            " INSERT INTO lumo_centre VALUES (" +
            std::to_string(version) + ")");
}

void PostgresDatabase::lockTables()
{
    execute("SELECT pg_advisory_xact_lock(" + std::to_string(kLockOfTables) + ")");
}

bool PostgresDatabase::tryLock(const std::string& name)
{
    const auto lock = prepare(
        "SELECT pg_try_advisory_lock(hashtextextended(:name, " + std::to_string(kLockOfTables) + "))", {});
    lock->bindAll(name);
    return lock->step() && lock->id(0) != 0;
}

/// What is remembered is forgotten at once in a transaction, and otherwise after a quarter of a second:
/// nobody reports the changes of others.
std::optional<std::uint64_t> PostgresDatabase::state()
{
    if (m_InTransaction)
        return std::nullopt;
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count()) /
           250;
}

void PostgresDatabase::noteIdentifier(const std::string& table, const std::string& idColumn, std::uint32_t id)
{
    const auto sequence =
        prepare("SELECT setval(name, greatest(:id, coalesce(pg_sequence_last_value(name), 1)))"
                " FROM CAST(pg_get_serial_sequence(:table, :column) AS regclass) AS name",
                {});
    sequence->bindAll(id, table, idColumn);
    sequence->step();
}

void PostgresDatabase::keepState()
{
    execute("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY");
    m_InTransaction = true;
}

void PostgresDatabase::revive()
{
    if (m_InTransaction)
        return;
    if (::PQstatus(connection()) == CONNECTION_OK)
        ::PQconsumeInput(connection()); // finds out whether the server has closed it
    if (::PQstatus(connection()) == CONNECTION_OK)
        return;
    ::PQreset(connection());
    ++m_Generation;
    if (::PQstatus(connection()) != CONNECTION_OK)
        throw DatabaseError(Kind::Lost, "can't connect to the database " + m_Name + ": " +
                                            trimmed(::PQerrorMessage(connection())));
    setUp();
}

PostgresDatabase::Prepared& PostgresDatabase::prepared(const std::string& key)
{
    Prepared& known = m_Prepared[key];
    if (known.name.empty())
        known.name = "s" + std::to_string(m_Prepared.size());
    return known;
}

PostgresResult PostgresDatabase::check(PGresult* result) const
{
    PostgresResult owned(result);
    const ExecStatusType status = ::PQresultStatus(result);
    if (status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK || status == PGRES_SINGLE_TUPLE)
        return owned;
    const auto field = [result](int code) {
        const char* text = result == nullptr ? nullptr : ::PQresultErrorField(result, code);
        return std::string(text == nullptr ? "" : text);
    };
    const std::string constraint = field(PG_DIAG_CONSTRAINT_NAME);
    std::string reason = field(PG_DIAG_MESSAGE_PRIMARY); // the detail has values of records
    if (reason.empty())
        reason = trimmed(::PQerrorMessage(connection()));
    const Kind kind = ::PQstatus(connection()) == CONNECTION_OK
                          ? kindOf(field(PG_DIAG_SQLSTATE).c_str(), constraint)
                          : Kind::Lost;
    throw DatabaseError(kind, reason, constraint);
}

void PostgresDatabase::begin()
{
    revive();
    try {
        check(::PQexec(connection(), "BEGIN"));
    } catch (const DatabaseError& error) {
        if (error.kind() != Kind::Lost)
            throw;
        revive();
        check(::PQexec(connection(), "BEGIN"));
    }
    m_InTransaction = true;
}

void PostgresDatabase::commit()
{
    PostgresResult result(::PQexec(connection(), "COMMIT"));
    m_InTransaction = false;
    if (::PQstatus(connection()) != CONNECTION_OK)
        throw DatabaseError(Kind::Other, "the connection was lost while a change was committed, which may"
                                         " have been made or not");
    result = check(result.release());
    if (std::strcmp(::PQcmdStatus(result.get()), "COMMIT") != 0)
        throw DatabaseError(Kind::Other, "the transaction had failed before it was committed");
}

void PostgresDatabase::rollback() noexcept
{
    m_InTransaction = false;
    if (::PQstatus(connection()) == CONNECTION_OK && ::PQtransactionStatus(connection()) != PQTRANS_IDLE)
        ::PQclear(::PQexec(connection(), "ROLLBACK"));
}

} // namespace centre
