#ifndef LUMO_CENTRE_DATABASE_ROWINSERTION_H
#define LUMO_CENTRE_DATABASE_ROWINSERTION_H

#include "centre/database/Database.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace centre {

/// Inserts rows into a table, a hundred by one statement, in the caller's transaction. Throws DatabaseError.
class RowInsertion
{
public:
    struct Bytes
    {
        std::string bytes;
    };
    struct Null
    {
    };
    using Value = std::variant<Null, std::int64_t, double, std::string, Bytes>;

    /// `head` is the SQL before VALUES, `tail` that after the rows.
    RowInsertion(Database& database, std::string head, std::size_t columns, std::string tail = {});

    void add(std::vector<Value> row);
    /// Inserts the rows that were added and are not inserted yet.
    void flush();

private:
    std::unique_ptr<Statement> prepare(std::size_t rows);
    void insert(Statement& statement, std::size_t first, std::size_t rows);

    Database& m_Database;
    const std::string m_Head;
    const std::size_t m_Columns;
    const std::string m_Tail;
    std::unique_ptr<Statement> m_InsertMany;
    std::unique_ptr<Statement> m_InsertOne;
    std::vector<std::vector<Value>> m_Rows;
};

} // namespace centre

#endif
