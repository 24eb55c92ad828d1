#ifndef LUMO_CENTRE_DATABASE_POSTGRESDATABASE_H
#define LUMO_CENTRE_DATABASE_POSTGRESDATABASE_H

#include "centre/database/Database.h"

#include <memory>
#include <string>
#include <unordered_map>

struct pg_conn;   // of libpq
struct pg_result; // of libpq

namespace centre {

/// Whether a text is the address of a PostgreSQL server, "postgresql://..." or "postgres://...".
bool isPostgresUrl(const std::string& text);

/// Returns the address with the host and the name of the database only: no user, no password. Throws
/// DatabaseError for an address that libpq does not take.
std::string shownUrl(const std::string& url);

struct FreePostgresResult
{
    void operator()(pg_result* result) const;
};
using PostgresResult = std::unique_ptr<pg_result, FreePostgresResult>;

/// A connection to a database of PostgreSQL 15 or later. After it was lost, a statement that only reads, and
/// the begin of a transaction, connect again; anything else throws DatabaseError(Lost).
class PostgresDatabase : public Database
{
public:
    /// Throws DatabaseError(Lost) when the server can't be reached or does not let the user in, NotADatabase
    /// for a server or a database that can't be used.
    explicit PostgresDatabase(const std::string& url);
    ~PostgresDatabase() override;

    std::unique_ptr<Statement> prepare(const std::string& sql, const ParameterTypes& types) override;
    std::unique_ptr<Statement> prepareList(const std::string& sql, const ParameterTypes& types) override;
    void execute(const std::string& sql) override;
    void executeTables(const std::string& sql) override;
    const Dialect& dialect() const override;
    int version() override;
    void setVersion(int version) override;
    void lockTables() override;
    std::optional<std::uint64_t> state() override;
    void keepState() override;
    std::vector<Table> tables() override;
    std::unique_ptr<RowWriter> writeRows(const Table& table) override;
    void define(const char*, const TextOfId&) override {}
    void noteIdentifier(const std::string& table, const std::string& idColumn, std::uint32_t id) override;

    /// Takes a lock, which ends with the connection. Returns false if another connection has it.
    bool tryLock(const std::string& name);

    pg_conn* connection() const { return m_Connection.get(); }
    bool inTransaction() const { return m_InTransaction; }
    /// Connects again if the connection was lost and no transaction is under way.
    void revive();
    /// A number that changes when what was prepared on the server is gone.
    unsigned generation() const { return m_Generation; }
    /// A statement that has been prepared on the server, by its text and the types of its parameters.
    struct Prepared
    {
        std::string name;
        unsigned generation = 0; ///< 0: not prepared
    };
    Prepared& prepared(const std::string& key);

    /// Returns a result that is a success. Throws DatabaseError for any other.
    PostgresResult check(pg_result* result) const;

private:
    struct Disconnect
    {
        void operator()(pg_conn* connection) const;
    };

    void setUp();
    void begin() override;
    void commit() override;
    void rollback() noexcept override;

    const std::string m_Name; ///< for messages
    std::unique_ptr<pg_conn, Disconnect> m_Connection;
    std::unordered_map<std::string, Prepared> m_Prepared;
    unsigned m_Generation = 1;
    bool m_InTransaction = false;
};

} // namespace centre

#endif
