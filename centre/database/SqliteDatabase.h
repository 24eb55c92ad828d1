#ifndef LUMO_CENTRE_DATABASE_SQLITEDATABASE_H
#define LUMO_CENTRE_DATABASE_SQLITEDATABASE_H

#include "centre/database/Database.h"

#include <memory>
#include <string>

namespace SQLite {
class Database;
class Statement;
} // namespace SQLite

namespace centre {

/// A database of SQLite in a file: with foreign keys, each commit flushed to the disk, waiting for other
/// writers.
class SqliteDatabase : public Database
{
public:
    enum class Open
    {
        ReadOnly,
        ReadWrite,
        Create
    };

    /// Throws DatabaseError(NotADatabase) for a file of another kind.
    SqliteDatabase(const std::string& file, Open open);
    ~SqliteDatabase() override;

    std::unique_ptr<Statement> prepare(const std::string& sql, const ParameterTypes& types) override;
    std::unique_ptr<Statement> prepareList(const std::string& sql, const ParameterTypes& types) override;
    void execute(const std::string& sql) override;
    const Dialect& dialect() const override;
    int version() override;
    void setVersion(int version) override;
    std::optional<std::uint64_t> state() override;
    void holdState() override;
    void releaseState() noexcept override;
    void keepState() override;
    std::vector<Table> tables() override;
    std::unique_ptr<RowWriter> writeRows(const Table& table) override;
    void deferReferences() override;
    void define(const char* name, const TextOfId& function) override;
    void beginBulk() override;
    void endBulk() noexcept override;
    void noteIdentifier(const std::string&, const std::string&, std::uint32_t) override {}

    /// Replaces the content by that of another database.
    void copyFrom(SqliteDatabase& other);

private:
    void begin() override;
    void commit() override;
    void rollback() noexcept override;

    const std::string m_File;
    std::unique_ptr<SQLite::Database> m_Database;
    std::unique_ptr<SQLite::Statement> m_Hold; ///< under way while a state is held
};

} // namespace centre

#endif
