#include "centre/stac/Collections.h"

#include "centre/database/Sql.h"
#include "centre/stac/Instant.h"
#include "centre/store/Ownership.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <utility>

namespace centre {

namespace {

using nlohmann::json;

constexpr std::chrono::minutes kKept{1};
constexpr int kMostSensors = 1000;
constexpr double kHalfCircle = 180;
constexpr double kQuarterCircle = 90;

const RecordKind* kindOfType(const std::string& dataType)
{
    const auto& kinds = recordKinds();
    const auto kind = std::find_if(kinds.begin(), kinds.end(),
                                   [&dataType](const RecordKind& each) { return owns(dataType, each); });
    return kind == kinds.end() ? nullptr : &*kind;
}

std::unique_ptr<Statement> started(Connection& connection, const std::string& sql, std::uint32_t typeId)
{
    auto statement = connection.database().prepare(sql);
    statement->bind(1, typeId);
    return statement;
}

/// The bounds of all records; they go all the way round where one crosses the date line.
json boundingBox(Connection& connection, const Collection& collection)
{
    const auto row = started(connection,
                             "SELECT min(west), min(south), max(east), max(north) FROM " +
                                 collection.kind->name + " WHERE type_id = ?",
                             collection.typeId);
    if (!row->step() || !row->text(0))
        return {-kHalfCircle, -kQuarterCircle, kHalfCircle, kQuarterCircle};
    const auto number = [&row](int column) { return std::strtod(row->string(column).c_str(), nullptr); };
    const bool crosses = number(2) > kHalfCircle;
    return {crosses ? -kHalfCircle : number(0), number(1), crosses ? kHalfCircle : number(2), number(3)};
}

json interval(Connection& connection, const Collection& collection)
{
    const auto end = [&](const char* order, const char* time) -> json {
        const auto row =
            started(connection,
                    "SELECT date FROM " + collection.kind->name +
                        " WHERE type_id = ? AND date IS NOT NULL ORDER BY date" + order + " LIMIT 1",
                    collection.typeId);
        return row->step() ? json(row->string(0) + time) : json();
    };
    return {end("", kBeginOfDay), end(" DESC", kEndOfDay)};
}

json sensors(Connection& connection, const Collection& collection)
{
    const auto row = started(connection,
                             "SELECT DISTINCT sensor FROM " + collection.kind->name +
                                 " WHERE type_id = ? AND sensor IS NOT NULL ORDER BY sensor LIMIT " +
                                 std::to_string(kMostSensors),
                             collection.typeId);
    json names = json::array();
    while (row->step())
        names.push_back(row->string(0));
    return names;
}

json extentAndSummaries(Connection& connection, const Collection& collection)
{
    json fields = {{"extent",
                    {{"spatial", {{"bbox", json::array({boundingBox(connection, collection)})}}},
                     {"temporal", {{"interval", json::array({interval(connection, collection)})}}}}},
                   {"summaries", {{"project", json::array({collection.project})}}}};
    if (json names = sensors(connection, collection); !names.empty())
        fields["summaries"]["sensor"] = std::move(names);
    return fields;
}

} // namespace

std::vector<Collection> readableCollections(Connection& connection, const User& user)
{
    static const Sql sql("SELECT type_id, data_type, type_text, project_name FROM project JOIN "
                         "type USING (project_id) WHERE " +
                         readableRow("project") + "ORDER BY type_id");
    Statement& row = connection.statement(sql);
    const ResetAtEnd resetAtEnd(row);
    row.bindAll(user.companyId);
    std::vector<Collection> collections;
    while (row.step())
        if (const RecordKind* kind = kindOfType(row.string(1)))
            collections.push_back({row.id(0), kind, row.string(1), row.string(2), row.string(3)});
    return collections;
}

json CollectionExtents::of(Connection& connection, const Collection& collection)
{
    {
        const std::lock_guard lock(m_Mutex);
        const auto known = m_Known.find(collection.typeId);
        if (known != m_Known.end() && known->second.until > Clock::now())
            return known->second.fields;
    }
    json fields = extentAndSummaries(connection, collection);
    const std::lock_guard lock(m_Mutex);
    m_Known[collection.typeId] = {fields, Clock::now() + kKept};
    return fields;
}

json linkTo(const std::string& relation, const std::string& address, const std::string& mediaType,
            const std::string& title)
{
    json made = {{"rel", relation}, {"href", address}, {"type", mediaType}};
    if (!title.empty())
        made["title"] = title;
    return made;
}

json collectionDocument(const Collection& collection, const json& extentAndSummaries, const std::string& root)
{
    const std::string self = root + "/collections/" + collection.id();
    const std::string title = collection.project + " / " + collection.dataType;
    json document = {
        {"type", "Collection"},
        {"stac_version", kStacVersion},
        {"stac_extensions", json::array()},
        {"id", collection.id()},
        {"title", title},
        {"description", collection.description.empty() ? title : collection.description},
        {"license", "proprietary"},
        {"links",
         {linkTo("self", self, kJson), linkTo("root", root, kJson), linkTo("parent", root, kJson),
          linkTo("items", self + "/items", kGeoJson, "items of " + title),
          linkTo(kQueryables, self + "/queryables", kSchemaJson)}}};
    document.update(extentAndSummaries);
    return document;
}

} // namespace centre
