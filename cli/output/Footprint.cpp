#include "cli/output/Footprint.h"

#include <proj.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <memory>
#include <regex>
#include <string>

namespace cli {

namespace {

using Point = std::pair<double, double>;

constexpr int kPointsOfEdge = 8; // edges that are straight in a projection bend in degrees
constexpr double kUnits = 1e8;   // of a degree: a millimetre

struct Bounds
{
    std::string system;
    double west, south, east, north; ///< in the units of the system
};

std::optional<Bounds> boundsOf(const std::string& text)
{
    static const std::regex form("(EPSG:[0-9]{1,9}) west ([-+.e0-9]+) south ([-+.e0-9]+)"
                                 " east ([-+.e0-9]+) north ([-+.e0-9]+)");
    std::smatch parts;
    if (!std::regex_match(text, parts, form))
        return std::nullopt;
    std::array<double, 4> numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const std::string number = parts[i + 2];
        const char* const end = number.data() + number.size();
        const auto [stop, error] = std::from_chars(number.data(), end, numbers[i]);
        if (error != std::errc() || stop != end)
            return std::nullopt;
    }
    return Bounds{parts[1], numbers[0], numbers[1], numbers[2], numbers[3]};
}

/// The edge of the bounds, counterclockwise from the south-west.
std::vector<Point> edgeOf(const Bounds& bounds, int pointsOfEdge)
{
    const std::array<Point, 5> corners = {{{bounds.west, bounds.south},
                                           {bounds.east, bounds.south},
                                           {bounds.east, bounds.north},
                                           {bounds.west, bounds.north},
                                           {bounds.west, bounds.south}}};
    std::vector<Point> points;
    for (std::size_t side = 0; side + 1 < corners.size(); ++side)
        for (int i = 0; i < pointsOfEdge; ++i) {
            const double part = double(i) / pointsOfEdge;
            const auto& [x, y] = corners[side];
            const auto& [endX, endY] = corners[side + 1];
            points.emplace_back(x + part * (endX - x), y + part * (endY - y));
        }
    points.push_back(points.front());
    return points;
}

/// Turns points of a system into degrees. Returns false if the system is not known or has no degrees there.
bool toDegrees(const std::string& system, std::vector<Point>& points)
{
    const std::unique_ptr<PJ_CONTEXT, decltype(&proj_context_destroy)> context(proj_context_create(),
                                                                               &proj_context_destroy);
    proj_log_level(context.get(), PJ_LOG_NONE);
    using Projection = std::unique_ptr<PJ, decltype(&proj_destroy)>;
    const Projection asDefined(proj_create_crs_to_crs(context.get(), system.c_str(), "EPSG:4326", nullptr),
                               &proj_destroy);
    const Projection projection(asDefined ? proj_normalize_for_visualization(context.get(), asDefined.get())
                                          : nullptr,
                                &proj_destroy); // longitude or east first
    for (Point& point : points) {
        if (!projection)
            return false;
        const PJ_COORD place =
            proj_trans(projection.get(), PJ_FWD, proj_coord(point.first, point.second, 0, HUGE_VAL));
        point = {place.xy.x, place.xy.y};
    }
    return true;
}

} // namespace

std::optional<Footprint> footprintOf(const lumo::Entry& file)
{
    const std::optional<Bounds> bounds = boundsOf(file.longText.value_or(""));
    if (!bounds)
        return std::nullopt;
    const bool isInDegrees = bounds->system == "EPSG:4326";
    Footprint footprint{edgeOf(*bounds, isInDegrees ? 1 : kPointsOfEdge), HUGE_VAL, HUGE_VAL, -HUGE_VAL,
                        -HUGE_VAL};
    if (!isInDegrees && !toDegrees(bounds->system, footprint.ring))
        return std::nullopt;
    double last = footprint.ring.front().first;
    for (auto& [x, y] : footprint.ring) {
        if (!(std::abs(x) <= 720) || !(std::abs(y) <= 90))
            return std::nullopt;
        x = isInDegrees ? x : x - 360 * std::round((x - last) / 360);
        last = x;
        x = std::round(x * kUnits) / kUnits;
        y = std::round(y * kUnits) / kUnits;
        footprint.west = std::min(footprint.west, x);
        footprint.east = std::max(footprint.east, x);
        footprint.south = std::min(footprint.south, y);
        footprint.north = std::max(footprint.north, y);
    }
    if (footprint.ring.front() != footprint.ring.back()) // around a pole
        return std::nullopt;
    return footprint;
}

std::string boundsText(const Footprint& footprint)
{
    const auto number = [](double value) { return Json(value).dump(); };
    return "west " + number(footprint.west) + " south " + number(footprint.south) + " east " +
           number(footprint.east) + " north " + number(footprint.north);
}

Json boundsJson(const Footprint& footprint)
{
    return {footprint.west, footprint.south, footprint.east, footprint.north};
}

Json geometryJson(const std::optional<Footprint>& footprint)
{
    if (!footprint)
        return nullptr;
    Json ring = Json::array();
    for (const auto& [x, y] : footprint->ring)
        ring.push_back({x, y});
    return {{"type", "Polygon"}, {"coordinates", {ring}}};
}

} // namespace cli
