#include "centre/stac/CatalogFilter.h"

#include "centre/base/Text.h"
#include "centre/http/Http.h"
#include "centre/stac/Instant.h"

#include <algorithm>
#include <array>

namespace centre {

namespace {

using nlohmann::json;

constexpr int kDeepestFilter = 20;
constexpr std::size_t kMostValues = 1000;
constexpr std::array<const char*, 6> kComparisons = {"=", "<>", "<", ">", "<=", ">="};

HttpError notAFilter(const std::string& reason)
{
    return {400, "the filter is not valid: " + reason};
}

bool isComparison(const std::string& operation)
{
    return std::find(kComparisons.begin(), kComparisons.end(), operation) != kComparisons.end();
}

/// Writes an expression as SQL.
class SqlWriter
{
public:
    explicit SqlWriter(const RecordKind& kind) : m_Kind(kind) {}

    std::string condition(const json& expression, int depth)
    {
        if (depth > kDeepestFilter)
            throw notAFilter("it is nested too deeply");
        if (!expression.is_object() || !expression.contains("op") || !expression["op"].is_string() ||
            !expression.contains("args") || !expression["args"].is_array())
            throw notAFilter("an expression has an \"op\" and \"args\"");
        const std::string operation = expression["op"];
        const json& arguments = expression["args"];
        if (operation == "and" || operation == "or")
            return joined(operation, arguments, depth);
        requireCount(arguments, operation == "not" || operation == "isNull" ? 1 : 2);
        if (operation == "not")
            return "NOT " + condition(arguments[0], depth + 1);
        if (operation == "isNull")
            return isNull(column(arguments[0]));
        if (operation == "in")
            return list(arguments);
        if (isComparison(operation))
            return "(" + operand(arguments[0]) + " " + operation + " " + operand(arguments[1]) + ")";
        throw notAFilter("unknown operation '" + abbreviated(operation) + "'");
    }

    std::vector<std::pair<std::string, std::string>> parameters;

private:
    static void requireCount(const json& arguments, std::size_t count)
    {
        if (arguments.size() != count)
            throw notAFilter("an operation has the wrong number of arguments");
    }

    std::string joined(const std::string& operation, const json& arguments, int depth)
    {
        if (arguments.size() < 2)
            throw notAFilter("\"" + operation + "\" needs two arguments");
        std::string sql;
        for (const json& argument : arguments)
            sql += (sql.empty()          ? "("
                    : operation == "and" ? " AND "
                                         : " OR ") +
                   condition(argument, depth + 1);
        return sql + ")";
    }

    std::string list(const json& arguments)
    {
        if (!arguments[1].is_array() || arguments[1].empty())
            throw notAFilter("\"in\" needs a list of values");
        std::string sql;
        for (const json& value : arguments[1])
            sql += (sql.empty() ? " IN (" : ", ") + operand(value);
        return "(" + column(arguments[0]) + sql + "))";
    }

    /// The names of project and collection are never absent.
    static std::string isNull(const std::string& operand)
    {
        return operand[0] == ':' ? "1 = 0" : "(" + operand + " IS NULL)";
    }

    static bool isProperty(const json& argument)
    {
        return argument.is_object() && argument.contains("property");
    }

    std::string column(const json& argument) const
    {
        if (!isProperty(argument) || !argument["property"].is_string())
            throw notAFilter("a property is missing");
        const std::string name = argument["property"];
        if (name == "sensor")
            return m_Kind.name + ".sensor";
        if (name == "project" || name == "collection")
            return ":" + name;
        if (name == "id")
            return "('" + m_Kind.name + "-' || " + m_Kind.name + "." + m_Kind.idColumn() + ")";
        if (name == "datetime")
            return "(" + m_Kind.name + ".date || '" + kBeginOfDay + "')";
        throw notAFilter("unknown property '" + abbreviated(name) +
                         "'; there are sensor, project, collection, id and datetime");
    }

    std::string operand(const json& argument)
    {
        return isProperty(argument) ? column(argument) : parameter(valueOf(argument));
    }

    static std::string valueOf(const json& value)
    {
        if (value.is_string())
            return value;
        if (value.is_object() && value.size() == 1 && value.begin().value().is_string()) {
            const std::string text = value.begin().value();
            if (value.contains("timestamp"))
                return utcTime(text);
            if (value.contains("date"))
                return utcTime(text + kBeginOfDay);
        }
        throw notAFilter("a value must be a text, a date or a timestamp");
    }

    std::string parameter(std::string value)
    {
        if (parameters.size() >= kMostValues)
            throw notAFilter("it has more than " + std::to_string(kMostValues) + " values");
        parameters.emplace_back(":value" + std::to_string(parameters.size() + 1), std::move(value));
        return parameters.back().first;
    }

    const RecordKind& m_Kind;
};

json comparison(const std::string& property, const std::string& operation, json value)
{
    if (property == "datetime" && value.is_string())
        value = {{"timestamp", std::move(value)}};
    return {{"op", operation}, {"args", json::array({{{"property", property}}, std::move(value)})}};
}

} // namespace

json filterFromQuery(const json& query)
{
    static const std::vector<std::pair<std::string, std::string>> operations = {
        {"eq", "="}, {"neq", "<>"}, {"lt", "<"}, {"lte", "<="}, {"gt", ">"}, {"gte", ">="}, {"in", "in"}};
    const auto refuse = [] {
        throw HttpError(400, "the query is not valid: it has properties with any of eq, neq, lt, lte, gt, gte"
                             " and in");
    };
    if (!query.is_object())
        refuse();
    json all = json::array();
    for (const auto& [property, conditions] : query.items()) {
        if (!conditions.is_object())
            refuse();
        for (const auto& [name, value] : conditions.items()) {
            const auto found = std::find_if(operations.begin(), operations.end(),
                                            [&key = name](const auto& each) { return each.first == key; });
            if (found == operations.end())
                refuse();
            all.push_back(comparison(property, found->second, value));
        }
    }
    if (all.empty())
        return nullptr;
    return all.size() == 1 ? all[0] : json{{"op", "and"}, {"args", all}};
}

FilterSql filterSql(const json& filter, const RecordKind& kind)
{
    SqlWriter writer(kind);
    std::string condition = writer.condition(filter, 0);
    return {std::move(condition), std::move(writer.parameters)};
}

} // namespace centre
