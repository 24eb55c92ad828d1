#include "centre/database/PostgresStatement.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>

namespace centre {

namespace {

// The identifiers of types, which are fixed.
constexpr Oid kBytes = 17;
constexpr Oid kInteger = 20;
constexpr Oid kText = 25;
constexpr Oid kReal = 701;
constexpr Oid kIntegers = 1016;

Oid typeOf(ValueType type)
{
    switch (type) {
    case ValueType::Integer:
        return kInteger;
    case ValueType::Real:
        return kReal;
    case ValueType::Text:
        return kText;
    case ValueType::Bytes:
        return kBytes;
    default:
        return kIntegers;
    }
}

bool isNameCharacter(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
}

/// The end of what begins with a quote, which ends with the same.
std::size_t endOfQuoted(const std::string& sql, std::size_t start)
{
    return std::min(sql.find(sql[start], start + 1), sql.size() - 1) + 1;
}

bool startsWith(const std::string& text, const char* start)
{
    return text.rfind(start, 0) == 0;
}

} // namespace

NumberedSql::NumberedSql(const std::string& sql)
{
    for (std::size_t at = 0; at < sql.size();) {
        std::size_t end = at + 1;
        const bool isCast = sql.compare(at, 2, "::") == 0;
        if (sql[at] == '\'' || sql[at] == '"')
            end = endOfQuoted(sql, at);
        else if (isCast)
            end = at + 2;
        else if (sql[at] == ':' || sql[at] == '?') {
            while (end < sql.size() && isNameCharacter(sql[end]))
                ++end;
            const std::string name = sql.substr(at, end - at);
            auto known =
                name == "?" ? parameters.end() : std::find(parameters.begin(), parameters.end(), name);
            if (known == parameters.end())
                known = parameters.insert(known, name);
            text += "$" + std::to_string(known - parameters.begin() + 1);
            at = end;
            continue;
        }
        text.append(sql, at, end - at);
        at = end;
    }
}

PostgresStatement::PostgresStatement(PostgresDatabase& database, const std::string& sql,
                                     const ParameterTypes& types, Rows rows)
    : m_Database(database),
      m_Sql(sql),
      m_Rows(rows),
      m_IsRead(startsWith(sql, "SELECT") ||
               (startsWith(sql, "WITH") && sql.find("INSERT") == std::string::npos)),
      m_Values(m_Sql.parameters.size())
{
    for (const auto& [name, type] : types)
        if (const int place = parameter(name))
            m_Values[place - 1].type = typeOf(type);
}

int PostgresStatement::parameter(const std::string& name) const
{
    const auto& names = m_Sql.parameters;
    const auto found = std::find(names.begin(), names.end(), name);
    return found == names.end() ? 0 : static_cast<int>(found - names.begin()) + 1;
}

int PostgresStatement::columnCount()
{
    return ::PQnfields(description());
}

std::string PostgresStatement::columnName(int column)
{
    return ::PQfname(description(), column);
}

const PGresult* PostgresStatement::description()
{
    if (!m_Description) {
        m_Database.revive();
        const std::string name = prepare().name;
        m_Description = m_Database.check(::PQdescribePrepared(m_Database.connection(), name.c_str()));
    }
    return m_Description.get();
}

PostgresStatement::Value& PostgresStatement::set(int place, Oid type, std::string text)
{
    Value& value = m_Values.at(place - 1);
    if (value.type == 0) {
        value.type = type;
        m_Prepared = nullptr;
    }
    value.kept = std::move(text);
    value.data = value.kept.c_str();
    value.size = static_cast<int>(value.kept.size());
    value.isBinary = 0;
    return value;
}

void PostgresStatement::bindNull(int place)
{
    m_Values.at(place - 1).data = nullptr;
}

void PostgresStatement::bindInteger(int place, std::int64_t value)
{
    set(place, kInteger, std::to_string(value));
}

void PostgresStatement::bindReal(int place, double value)
{
    char text[32];
    set(place, kReal, std::string(text, std::to_chars(text, text + sizeof text, value).ptr));
}

/// Sent as bytes with their number, so that a character 0 does not end the text: the server refuses it.
void PostgresStatement::bindText(int place, std::string_view text)
{
    set(place, kText, std::string(text)).isBinary = 1;
}

void PostgresStatement::bindBytes(int place, std::string_view bytes)
{
    set(place, kBytes, std::string(bytes)).isBinary = 1;
}

void PostgresStatement::bindTextInPlace(int place, const std::string& text)
{
    Value& value = set(place, kText, {});
    value.data = text.data();
    value.size = static_cast<int>(text.size());
    value.isBinary = 1;
}

void PostgresStatement::bindIdentifiers(int place, const Identifiers& ids)
{
    std::string list = "{";
    for (const std::uint32_t id : ids)
        list += (list.size() > 1 ? "," : "") + std::to_string(id);
    set(place, kIntegers, list + "}");
}

/// Prepares the statement on the server, unless one with the same text and types is prepared there already.
PostgresDatabase::Prepared& PostgresStatement::prepare()
{
    std::vector<Oid> types;
    for (const Value& value : m_Values)
        types.push_back(value.type);
    if (m_Prepared == nullptr) {
        std::string key = m_Sql.text;
        for (const Oid type : types)
            key += ' ' + std::to_string(type);
        m_Prepared = &m_Database.prepared(key);
    }
    if (m_Prepared->generation != m_Database.generation()) {
        m_Database.check(::PQprepare(m_Database.connection(), m_Prepared->name.c_str(), m_Sql.text.c_str(),
                                     static_cast<int>(types.size()), types.data()));
        m_Prepared->generation = m_Database.generation();
    }
    return *m_Prepared;
}

void PostgresStatement::send()
{
    std::vector<const char*> data;
    std::vector<int> sizes;
    std::vector<int> formats;
    for (const Value& value : m_Values) {
        data.push_back(value.data);
        sizes.push_back(value.size);
        formats.push_back(value.isBinary);
    }
    const std::string name = prepare().name;
    const int count = static_cast<int>(data.size());
    PGconn* const connection = m_Database.connection();
    if (m_Rows == Rows::Together) {
        m_Result = m_Database.check(
            ::PQexecPrepared(connection, name.c_str(), count, data.data(), sizes.data(), formats.data(), 0));
        return;
    }
    if (::PQsendQueryPrepared(connection, name.c_str(), count, data.data(), sizes.data(), formats.data(),
                              0) != 1)
        m_Database.check(nullptr);
    ::PQsetSingleRowMode(connection);
    m_Receiving = true;
    m_Result = m_Database.check(::PQgetResult(connection));
}

void PostgresStatement::start()
{
    reset();
    m_Database.revive();
    try {
        send();
    } catch (const DatabaseError& error) {
        reset();
        if (error.kind() != DatabaseError::Kind::Lost || m_Database.inTransaction() || !m_IsRead)
            throw;
        m_Database.revive();
        send();
    }
    m_Started = true;
    m_Row = 0;
}

bool PostgresStatement::step()
{
    if (m_Started)
        ++m_Row;
    else
        start();
    while (m_Row >= ::PQntuples(m_Result.get())) {
        PGresult* next = m_Receiving ? ::PQgetResult(m_Database.connection()) : nullptr;
        m_Receiving = next != nullptr;
        if (next == nullptr)
            return false;
        m_Result = m_Database.check(next);
        m_Row = 0;
    }
    return true;
}

int PostgresStatement::run()
{
    start();
    const int changed = std::atoi(::PQcmdTuples(m_Result.get()));
    reset();
    return changed;
}

void PostgresStatement::reset() noexcept
{
    while (m_Receiving) {
        PGresult* next = ::PQgetResult(m_Database.connection());
        m_Receiving = next != nullptr;
        ::PQclear(next);
    }
    m_Result.reset();
    m_Started = false;
}

std::optional<std::int64_t> PostgresStatement::integer(int column)
{
    const auto value = text(column);
    if (!value)
        return std::nullopt;
    if (*value == "t" || *value == "f") // a truth value
        return *value == "t" ? 1 : 0;
    std::int64_t number = 0;
    std::from_chars(value->data(), value->data() + value->size(), number);
    return number;
}

std::optional<std::string_view> PostgresStatement::text(int column)
{
    const PGresult* row = m_Result.get();
    if (::PQgetisnull(row, m_Row, column) != 0)
        return std::nullopt;
    return std::string_view(::PQgetvalue(row, m_Row, column),
                            static_cast<std::size_t>(::PQgetlength(row, m_Row, column)));
}

std::optional<double> PostgresStatement::real(int column)
{
    const auto value = text(column);
    if (!value)
        return std::nullopt;
    double number = 0;
    std::from_chars(value->data(), value->data() + value->size(), number);
    return number;
}

std::optional<std::string> PostgresStatement::bytes(int column)
{
    const auto value = text(column); // "\\x" and two digits for each byte
    if (!value)
        return std::nullopt;
    std::string bytes;
    for (std::size_t at = 2; at + 1 < value->size(); at += 2) {
        unsigned char byte = 0;
        std::from_chars(value->data() + at, value->data() + at + 2, byte, 16);
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

} // namespace centre
