#ifndef LUMO_CENTRE_DATABASE_DATABASE_H
#define LUMO_CENTRE_DATABASE_DATABASE_H

#include "centre/database/DatabaseError.h"
#include "centre/database/Dialect.h"
#include "centre/database/Statement.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace centre {

/// The kind of a parameter's values.
enum class ValueType
{
    Integer,
    Real,
    Text,
    Bytes,
    Identifiers
};

/// The kinds of named parameters, each with its colon. Those that are not in the list take the kind of the
/// first value that is set.
using ParameterTypes = std::vector<std::pair<std::string, ValueType>>;

/// A table of lumo-centre, without what the engine makes itself: generated columns, tables of an index.
struct Table
{
    std::string name;
    std::vector<std::pair<std::string, ValueType>> columns;
    std::vector<std::string> references; ///< other tables, to which its rows refer
    std::string identity; ///< the column of the identifiers that the engine gives; may be empty
};

/// Adds rows to a table in bulk, in the caller's transaction.
class RowWriter
{
public:
    RowWriter() = default;
    virtual ~RowWriter() = default;
    RowWriter(const RowWriter&) = delete;
    RowWriter& operator=(const RowWriter&) = delete;

    /// Adds the current row of a statement of another connection, whose columns are those of the table.
    virtual void add(Statement& row) = 0;
    /// To be called after the last row; nothing else may run on the connection before.
    virtual void finish() = 0;
};

/// A connection to a database of either engine, for one thread at a time. Functions throw
/// DatabaseError unless they are noexcept.
class Database
{
public:
    virtual ~Database() = default;
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Prepares one statement. The database must outlive it.
    virtual std::unique_ptr<Statement> prepare(const std::string& sql, const ParameterTypes& types = {}) = 0;
    /// The same, for a list of rows that may be long: nothing else may run on the connection between the
    /// first and the last step.
    virtual std::unique_ptr<Statement> prepareList(const std::string& sql, const ParameterTypes& types) = 0;
    /// Runs statements without parameters.
    virtual void execute(const std::string& sql) = 0;
    /// The same for statements that make tables, whose types and words are those of SQLite.
    virtual void executeTables(const std::string& sql) { execute(sql); }
    /// Returns the first column of the first row of a query as a text; empty for NULL and without a row.
    std::string value(const std::string& sql);

    virtual const Dialect& dialect() const = 0;

    /// Returns the version of the tables of lumo-centre; 0 if the database is empty. Throws
    /// DatabaseError(NotADatabase) for the database of another program.
    virtual int version() = 0;
    virtual void setVersion(int version) = 0;
    /// Waits until no other process makes or changes tables, to the end of the transaction.
    virtual void lockTables() {}

    /// Returns a number that changes when what was read before may have changed, at the latest half a second
    /// after the change; nothing when everything must be read again.
    virtual std::optional<std::uint64_t> state() = 0;

    /// Has all reads see one state of the database until `releaseState`, if the engine has that for nothing.
    virtual void holdState() {}
    virtual void releaseState() noexcept {}

    /// Has all reads see one state of the database, to the end of the connection, which can't write any more.
    virtual void keepState() = 0;

    /// Returns the tables of the catalogue in the order of their names.
    virtual std::vector<Table> tables() = 0;
    virtual std::unique_ptr<RowWriter> writeRows(const Table& table) = 0;
    /// Has references be checked at the end of the transaction, if the engine checks those of single rows.
    virtual void deferReferences() {}

    /// A function of a record's identifier for SQL: a text, or null.
    using TextOfId = std::function<const std::string*(std::uint32_t id)>;
    /// Defines such a function on an engine whose tables do not come with it.
    virtual void define(const char* name, const TextOfId& function) = 0;

    /// Makes ready for very many insertions, and ends them.
    virtual void beginBulk() {}
    virtual void endBulk() noexcept {}
    /// Has the next identifiers of a table follow `id`, which was given to a record.
    virtual void noteIdentifier(const std::string& table, const std::string& idColumn, std::uint32_t id) = 0;

protected:
    Database() = default;

private:
    friend class Transaction;
    virtual void begin() = 0;
    virtual void commit() = 0;
    virtual void rollback() noexcept = 0;
};

/// A transaction that writes. It is rolled back unless it is committed.
class Transaction
{
public:
    explicit Transaction(Database& database) : m_Database(database) { database.begin(); }
    ~Transaction()
    {
        if (!m_Committed)
            m_Database.rollback();
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit()
    {
        m_Database.commit();
        m_Committed = true;
    }

private:
    Database& m_Database;
    bool m_Committed = false;
};

} // namespace centre

#endif
