#ifndef LUMO_CENTRE_DATABASE_SQLITESTATEMENT_H
#define LUMO_CENTRE_DATABASE_SQLITESTATEMENT_H

#include "centre/database/DatabaseError.h"
#include "centre/database/Statement.h"

#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Statement.h>

#include <string>

namespace centre {

/// Returns the same error for all engines.
DatabaseError databaseError(const SQLite::Exception& exception);

template <class Work>
auto withSqliteErrors(Work work)
{
    try {
        return work();
    } catch (const SQLite::Exception& exception) {
        throw databaseError(exception);
    }
}

class SqliteStatement : public Statement
{
public:
    SqliteStatement(const SQLite::Database& database, const std::string& sql);

    int parameter(const std::string& name) const override;
    int parameterCount() const override;
    int columnCount() override;
    std::string columnName(int column) override;
    void bindBytes(int place, std::string_view bytes) override;
    void bindTextInPlace(int place, const std::string& text) override;
    bool step() override;
    int run() override;
    void reset() noexcept override;
    std::optional<std::int64_t> integer(int column) override;
    std::optional<std::string_view> text(int column) override;
    std::optional<double> real(int column) override;
    std::optional<std::string> bytes(int column) override;

private:
    void bindNull(int place) override;
    void bindInteger(int place, std::int64_t value) override;
    void bindReal(int place, double value) override;
    void bindText(int place, std::string_view text) override;
    void bindIdentifiers(int place, const Identifiers& ids) override;

    SQLite::Statement m_Statement;
};

} // namespace centre

#endif
