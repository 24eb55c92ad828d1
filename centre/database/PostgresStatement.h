#ifndef LUMO_CENTRE_DATABASE_POSTGRESSTATEMENT_H
#define LUMO_CENTRE_DATABASE_POSTGRESSTATEMENT_H

#include "centre/database/PostgresDatabase.h"

#include <libpq-fe.h>

#include <string>
#include <vector>

namespace centre {

/// SQL with its parameters `:name` and `?` as `$1`, `$2` and so on.
struct NumberedSql
{
    explicit NumberedSql(const std::string& sql);

    std::string text;
    std::vector<std::string> parameters; ///< by place, with their colon; "?" for one without a name
};

/// A statement that is prepared on the server when it runs first.
class PostgresStatement : public Statement
{
public:
    enum class Rows
    {
        Together, ///< all are received at once
        OneByOne  ///< so that a long list takes the memory of one
    };

    PostgresStatement(PostgresDatabase& database, const std::string& sql, const ParameterTypes& types,
                      Rows rows);
    ~PostgresStatement() override { PostgresStatement::reset(); }

    int parameter(const std::string& name) const override;
    int parameterCount() const override { return static_cast<int>(m_Values.size()); }
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
    /// A parameter as it is sent.
    struct Value
    {
        Oid type = 0; ///< 0: the server finds it out
        const char* data = nullptr;
        int size = 0;
        int isBinary = 0;
        std::string kept; ///< what `data` points to, unless that is the caller's
    };

    void bindNull(int place) override;
    void bindInteger(int place, std::int64_t value) override;
    void bindReal(int place, double value) override;
    void bindText(int place, std::string_view text) override;
    void bindIdentifiers(int place, const Identifiers& ids) override;

    Value& set(int place, Oid type, std::string text);
    const PGresult* description();
    PostgresDatabase::Prepared& prepare();
    void start();
    void send();

    PostgresDatabase& m_Database;
    const NumberedSql m_Sql;
    const Rows m_Rows;
    const bool m_IsRead;
    std::vector<Value> m_Values;
    PostgresDatabase::Prepared* m_Prepared = nullptr;
    PostgresResult m_Description;
    PostgresResult m_Result; ///< the rows, or the current one
    int m_Row = 0;           ///< in the result
    bool m_Started = false;
    bool m_Receiving = false; ///< more results are to be received
};

} // namespace centre

#endif
