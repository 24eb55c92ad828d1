#ifndef LUMO_CENTRE_DATABASE_STATEMENT_H
#define LUMO_CENTRE_DATABASE_STATEMENT_H

#include "centre/database/StatementCounts.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace centre {

/// A prepared statement. Parameters are `:name` or `?`; they have places from 1 on, in the order in which
/// each first occurs. Columns are counted from 0. For one thread at a time, and not beyond its database. All
/// functions but `reset` throw DatabaseError.
class Statement
{
public:
    using Identifiers = std::vector<std::uint32_t>;

    virtual ~Statement() = default;
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    /// Returns the place of a parameter, whose name has its colon; 0 if there is none.
    virtual int parameter(const std::string& name) const = 0;
    virtual int parameterCount() const = 0;
    virtual int columnCount() = 0;
    virtual std::string columnName(int column) = 0;

    /// Sets a parameter, which keeps its value until another is set: a whole number, a number, a text, a list
    /// of identifiers, or nullopt for NULL.
    template <class Value>
    void bind(int place, const Value& value)
    {
        if constexpr (std::is_same_v<Value, std::nullopt_t>)
            bindNull(place);
        else if constexpr (std::is_floating_point_v<Value>)
            bindReal(place, value);
        else if constexpr (std::is_arithmetic_v<Value> || std::is_enum_v<Value>)
            bindInteger(place, static_cast<std::int64_t>(value));
        else if constexpr (std::is_convertible_v<const Value&, std::string_view>)
            bindText(place, value);
        else if constexpr (std::is_same_v<Value, Identifiers>)
            bindIdentifiers(place, value);
        else
            value ? bind(place, *value) : bindNull(place);
    }
    /// Sets the parameters from the first on.
    template <class... Values>
    void bindAll(const Values&... values)
    {
        int place = 0;
        (bind(++place, values), ...);
    }
    /// Sets a parameter to bytes that are not a text.
    virtual void bindBytes(int place, std::string_view bytes) = 0;
    /// Sets a parameter to a text that must live until the statement is reset.
    virtual void bindTextInPlace(int place, const std::string& text) = 0;

    /// Goes to the next row, or starts. Returns false after the last one.
    virtual bool step() = 0;
    /// Runs a statement whose rows do not matter. Returns how many rows it inserted, changed or deleted.
    virtual int run() = 0;
    /// Runs an insertion with RETURNING of an identifier, to its end. Returns the identifier; nothing if
    /// nothing was inserted. Resets the statement, also before an exception.
    std::optional<std::uint32_t> runForId();
    /// Ends the statement, so that it can be run again.
    virtual void reset() noexcept = 0;

    /// A value of the current row; nothing for NULL. The text is valid until the next step or reset.
    virtual std::optional<std::int64_t> integer(int column) = 0;
    virtual std::optional<std::string_view> text(int column) = 0;
    virtual std::optional<double> real(int column) = 0;
    virtual std::optional<std::string> bytes(int column) = 0;

    /// The same, with 0 and an empty text for NULL.
    std::uint32_t id(int column) { return static_cast<std::uint32_t>(integer(column).value_or(0)); }
    std::string string(int column) { return std::string(text(column).value_or(std::string_view())); }

protected:
    Statement() = default;

    virtual void bindNull(int place) = 0;
    virtual void bindInteger(int place, std::int64_t value) = 0;
    virtual void bindReal(int place, double value) = 0;
    virtual void bindText(int place, std::string_view text) = 0;
    virtual void bindIdentifiers(int place, const Identifiers& ids) = 0;
};

/// Resets a statement at the end of a scope, also after an exception, and counts it. A statement that is not
/// reset holds up its connection and refuses new parameters.
class ResetAtEnd
{
public:
    explicit ResetAtEnd(Statement& statement) : m_Statement(statement), m_Begin(Clock::now()) {}
    ~ResetAtEnd()
    {
        m_Statement.reset();
        StatementCounts& counts = statementCounts();
        counts.count.fetch_add(1, std::memory_order_relaxed);
        const auto time =
            static_cast<std::uint64_t>(std::chrono::nanoseconds(Clock::now() - m_Begin).count());
        counts.nanoseconds.fetch_add(time, std::memory_order_relaxed);
    }

    ResetAtEnd(const ResetAtEnd&) = delete;
    ResetAtEnd& operator=(const ResetAtEnd&) = delete;

private:
    using Clock = std::chrono::steady_clock;

    Statement& m_Statement;
    const Clock::time_point m_Begin;
};

} // namespace centre

#endif
