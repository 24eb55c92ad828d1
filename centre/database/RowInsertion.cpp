#include "centre/database/RowInsertion.h"

#include <type_traits>
#include <utility>

namespace centre {

namespace {

constexpr std::size_t kRows = 100; // of a statement

void bindValue(Statement& statement, int place, const RowInsertion::Value& value)
{
    std::visit(
        [&](const auto& known) {
            using Known = std::decay_t<decltype(known)>;
            if constexpr (std::is_same_v<Known, RowInsertion::Null>)
                statement.bind(place, std::nullopt);
            else if constexpr (std::is_same_v<Known, RowInsertion::Bytes>)
                statement.bindBytes(place, known.bytes);
            else
                statement.bind(place, known);
        },
        value);
}

} // namespace

RowInsertion::RowInsertion(Database& database, std::string head, std::size_t columns, std::string tail)
    : m_Database(database), m_Head(std::move(head)), m_Columns(columns), m_Tail(std::move(tail))
{
}

void RowInsertion::add(std::vector<Value> row)
{
    m_Rows.push_back(std::move(row));
    if (m_Rows.size() < kRows)
        return;
    if (!m_InsertMany)
        m_InsertMany = prepare(kRows);
    insert(*m_InsertMany, 0, kRows);
    m_Rows.clear();
}

void RowInsertion::flush()
{
    if (!m_Rows.empty() && !m_InsertOne)
        m_InsertOne = prepare(1);
    for (std::size_t row = 0; row < m_Rows.size(); ++row)
        insert(*m_InsertOne, row, 1);
    m_Rows.clear();
}

std::unique_ptr<Statement> RowInsertion::prepare(std::size_t rows)
{
    std::string row;
    for (std::size_t column = 0; column < m_Columns; ++column)
        row += column == 0 ? "?" : ", ?";
    std::string all;
    for (std::size_t i = 0; i < rows; ++i)
        all += (i == 0 ? "(" : ", (") + row + ")";
    return m_Database.prepare(m_Head + " VALUES " + all + m_Tail);
}

void RowInsertion::insert(Statement& statement, std::size_t first, std::size_t rows)
{
    const ResetAtEnd resetAtEnd(statement);
    int place = 0;
    for (std::size_t row = first; row < first + rows; ++row)
        for (const Value& value : m_Rows[row])
            bindValue(statement, ++place, value);
    statement.run();
}

} // namespace centre
