#include "centre/stac/ItemSearch.h"

#include "centre/base/Text.h"
#include "centre/stac/CatalogFilter.h"
#include "centre/stac/Instant.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace centre {

namespace {

using nlohmann::json;

constexpr double kFullCircle = 360;
constexpr std::size_t kDigitsOfId = 8;
constexpr std::size_t kMostPositions = 100000;
constexpr char kIntersectsAndBbox[] = "a search has \"bbox\" or \"intersects\", not both";

/// Returns the parts of a list that commas separate.
std::vector<std::string> split(const std::string& list)
{
    std::vector<std::string> parts;
    for (std::size_t start = 0; start <= list.size();) {
        const std::size_t end = std::min(list.find(',', start), list.size());
        parts.push_back(list.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

double numberOf(const std::string& text)
{
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || !std::isfinite(value))
        throw HttpError(400, "'" + abbreviated(text) + "' is not a number");
    return value;
}

SearchBounds boundsOf(const std::vector<double>& numbers)
{
    constexpr std::size_t kWithHeights = 6;
    const bool hasHeights = numbers.size() == kWithHeights;
    if (numbers.size() != 4 && !hasHeights)
        throw HttpError(400, "\"bbox\" needs four numbers, west, south, east, north, or six with heights");
    SearchBounds bounds{numbers[0], numbers[1], numbers[hasHeights ? 3 : 2], numbers[hasHeights ? 4 : 3]};
    if (bounds.south > bounds.north)
        throw HttpError(400, "the south of \"bbox\" is beyond its north");
    if (std::abs(bounds.west) > kFullCircle || std::abs(bounds.east) > kFullCircle)
        throw HttpError(400, "the longitudes of \"bbox\" are degrees from -180 to 180");
    if (bounds.east < bounds.west)
        bounds.east += kFullCircle;
    return bounds;
}

std::size_t limitOf(std::int64_t limit)
{
    if (limit < 1)
        throw HttpError(400, "\"limit\" must be at least 1");
    return std::min(static_cast<std::size_t>(limit), ItemSearch::kMostLimit);
}

template <class Value>
std::vector<Value> listOf(const json& value, const std::string& name)
{
    try {
        if (value.is_array())
            return value.get<std::vector<Value>>();
    } catch (const json::exception&) { // another type
    }
    throw HttpError(400, "\"" + name + "\" must be a list");
}

std::string textOfMember(const json& value, const std::string& name)
{
    if (!value.is_string())
        throw HttpError(400, "\"" + name + "\" must be a text");
    return value;
}

json parsed(const std::string& text, const std::string& what)
{
    json value = json::parse(text, nullptr, false);
    if (value.is_discarded())
        throw HttpError(400, what + " is not JSON");
    return value;
}

void addFilter(ItemSearch& search, json filter)
{
    if (search.filter.is_null())
        search.filter = std::move(filter);
    else if (!filter.is_null())
        search.filter = {{"op", "and"}, {"args", json::array({std::move(search.filter), std::move(filter)})}};
}

json filterOf(const json& filter, const std::string& language)
{
    if (language == "cql2-text")
        return filterFromText(textOfMember(filter, "filter"));
    if (language != "cql2-json")
        throw HttpError(400, "\"filter-lang\" must be cql2-text or cql2-json");
    return filter;
}

/// Widens bounds by all positions in a list of coordinates, of whatever depth.
class BoundsOfPositions
{
public:
    void add(const json& coordinates, int depth)
    {
        constexpr int kDeepest = 4; // of a MultiPolygon
        if (!coordinates.is_array() || coordinates.empty() || depth > kDeepest)
            throw notAGeometry();
        if (!coordinates[0].is_number()) {
            for (const json& each : coordinates)
                add(each, depth + 1);
            return;
        }
        if (coordinates.size() < 2 || !coordinates[1].is_number() || ++m_Count > kMostPositions)
            throw notAGeometry();
        const double longitude = coordinates[0];
        const double latitude = coordinates[1];
        m_Bounds = m_Count == 1
                       ? SearchBounds{longitude, latitude, longitude, latitude}
                       : SearchBounds{std::min(m_Bounds.west, longitude), std::min(m_Bounds.south, latitude),
                                      std::max(m_Bounds.east, longitude), std::max(m_Bounds.north, latitude)};
    }

    void addGeometry(const json& geometry, int depth)
    {
        constexpr int kDeepest = 10;
        if (!geometry.is_object() || depth > kDeepest)
            throw notAGeometry();
        const auto parts = geometry.find("geometries");
        if (parts != geometry.end() && parts->is_array() && !parts->empty())
            for (const json& part : *parts)
                addGeometry(part, depth + 1);
        else
            add(geometry.value("coordinates", json()), 1);
    }

    SearchBounds bounds() const
    {
        return boundsOf({m_Bounds.west, m_Bounds.south, m_Bounds.east, m_Bounds.north});
    }

private:
    static HttpError notAGeometry() { return {400, "\"intersects\" must be a geometry of GeoJSON"}; }

    SearchBounds m_Bounds{};
    std::size_t m_Count = 0;
};

/// Returns a query as the body of a POST would have it.
json bodyOfQuery(const HttpRequest& request)
{
    json body = json::object();
    for (const auto& [name, text] : request.query) {
        if (text.empty() || body.contains(name))
            continue;
        if (name == "bbox")
            for (const std::string& part : split(text))
                body[name].push_back(numberOf(part));
        else if (name == "ids" || name == "collections")
            body[name] = split(text);
        else if (name == "intersects" || name == "query")
            body[name] = parsed(text, "\"" + name + "\"");
        else if (name == "limit")
            body[name] = static_cast<std::int64_t>(std::clamp(numberOf(text), -1.0, 1e9));
        else
            body[name] = text;
    }
    if (!body.contains("filter-lang"))
        body["filter-lang"] = "cql2-text";
    else if (body.contains("filter") && body["filter-lang"] == "cql2-json")
        body["filter"] = parsed(body["filter"], "\"filter\"");
    return body;
}

} // namespace

SearchBounds boundsOfGeometry(const json& geometry)
{
    BoundsOfPositions positions;
    positions.addGeometry(geometry, 0);
    return positions.bounds();
}

std::string pageToken(const ItemPlace& place)
{
    char text[2 * kDigitsOfId + 1];
    static_cast<void>(std::snprintf(text, sizeof text, "%08x%08x", place.typeId, place.recordId));
    return text;
}

ItemPlace placeOfToken(const std::string& token)
{
    ItemPlace place{};
    const auto read = [&token](std::size_t start, std::uint32_t& id) {
        const char* const begin = token.data() + start;
        constexpr int kHexadecimal = 16;
        return std::from_chars(begin, begin + kDigitsOfId, id, kHexadecimal).ptr == begin + kDigitsOfId;
    };
    if (token.size() != 2 * kDigitsOfId || !read(0, place.typeId) || !read(kDigitsOfId, place.recordId))
        throw HttpError(400, "\"token\" is not one of a page");
    return place;
}

json parsedBody(const HttpRequest& request)
{
    json body = parsed(request.body.empty() ? "{}" : request.body, "the body");
    if (!body.is_object())
        throw HttpError(400, "the body must be an object");
    return body;
}

ItemSearch searchOfBody(const json& body)
{
    ItemSearch search;
    const auto value = [&body](const char* name) {
        const auto found = body.find(name);
        return found == body.end() || found->is_null() ? nullptr : &*found;
    };
    if (const json* bbox = value("bbox"))
        search.bounds = boundsOf(listOf<double>(*bbox, "bbox"));
    if (const json* geometry = value("intersects")) {
        if (search.bounds)
            throw HttpError(400, kIntersectsAndBbox);
        search.bounds = boundsOfGeometry(*geometry);
    }
    if (const json* interval = value("datetime"))
        search.days = daysOf(textOfMember(*interval, "datetime"));
    if (const json* ids = value("ids"))
        search.ids = listOf<std::string>(*ids, "ids");
    if (const json* collections = value("collections"))
        search.collections = listOf<std::string>(*collections, "collections");
    if (const json* query = value("query"))
        addFilter(search, filterFromQuery(*query));
    if (const json* filter = value("filter")) {
        const json* language = value("filter-lang");
        addFilter(search, filterOf(*filter, language ? textOfMember(*language, "filter-lang") : "cql2-json"));
    }
    if (const json* limit = value("limit")) {
        if (!limit->is_number_integer())
            throw HttpError(400, "\"limit\" must be a whole number");
        search.limit =
            limitOf(limit->is_number_unsigned() ? static_cast<std::int64_t>(std::min<std::uint64_t>(
                                                      limit->get<std::uint64_t>(), ItemSearch::kMostLimit))
                                                : limit->get<std::int64_t>());
    }
    if (const json* token = value("token"))
        search.after = placeOfToken(textOfMember(*token, "token"));
    return search;
}

ItemSearch searchOfQuery(const HttpRequest& request)
{
    return searchOfBody(bodyOfQuery(request));
}

} // namespace centre
