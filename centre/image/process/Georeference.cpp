#include "centre/image/process/Georeference.h"

#include <gdal_alg.h>
#include <ogr_spatialref.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace centre {

namespace {

using Point = std::pair<double, double>;
using Transform = std::array<double, 6>;

/// Edges of the image that are straight in its system bend in degrees.
constexpr int kPointsOfEdge = 16;
constexpr double kFootprintUnits = 1e8; // of a degree: a millimetre

std::optional<Transform> transformOf(GDALDataset& dataset)
{
    Transform transform = {};
    bool found = dataset.GetGeoTransform(transform.data()) == CE_None;
    if (!found && dataset.GetGCPCount() > 0)
        found = GDALGCPsToGeoTransform(dataset.GetGCPCount(), dataset.GetGCPs(), transform.data(), TRUE) != 0;
    const bool finite =
        std::all_of(transform.begin(), transform.end(), [](double each) { return std::isfinite(each); });
    return found && finite ? std::optional(transform) : std::nullopt;
}

std::string systemOf(GDALDataset& dataset)
{
    const OGRSpatialReference* system = dataset.GetSpatialRef();
    if (system == nullptr)
        system = dataset.GetGCPSpatialRef();
    const char* authority = system != nullptr ? system->GetAuthorityName(nullptr) : nullptr;
    if (authority == nullptr || std::strcmp(authority, "EPSG") != 0)
        return "local";
    return std::string("EPSG:") + system->GetAuthorityCode(nullptr);
}

image::Bounds boundsOf(const Transform& t, double width, double height)
{
    image::Bounds bounds;
    bounds.set_west(HUGE_VAL);
    bounds.set_south(HUGE_VAL);
    bounds.set_east(-HUGE_VAL);
    bounds.set_north(-HUGE_VAL);
    for (const double column : {0.0, width})
        for (const double row : {0.0, height}) {
            const double x = t[0] + column * t[1] + row * t[2];
            const double y = t[3] + column * t[4] + row * t[5];
            bounds.set_west(std::min(bounds.west(), x));
            bounds.set_east(std::max(bounds.east(), x));
            bounds.set_south(std::min(bounds.south(), y));
            bounds.set_north(std::max(bounds.north(), y));
        }
    return bounds;
}

/// The image's edge from its first pixel on, columns and rows.
std::vector<Point> edgeOf(double width, double height)
{
    const std::array<Point, 5> corners = {{{0, 0}, {0, height}, {width, height}, {width, 0}, {0, 0}}};
    std::vector<Point> points;
    for (std::size_t side = 0; side + 1 < corners.size(); ++side)
        for (int i = 0; i < kPointsOfEdge; ++i) {
            const double part = double(i) / kPointsOfEdge;
            const auto& [fromX, fromY] = corners[side];
            const auto& [toX, toY] = corners[side + 1];
            points.emplace_back(fromX + part * (toX - fromX), fromY + part * (toY - fromY));
        }
    return points;
}

/// The edge in degrees of WGS 84; nothing if a point of it has no place there.
std::optional<std::vector<Point>> geographicEdge(GDALDataset& dataset)
{
    char system[] = "DST_SRS=EPSG:4326";
    char longitudes[] = "INSERT_CENTER_LONG=FALSE";
    std::array<char*, 3> options = {system, longitudes, nullptr};
    const std::unique_ptr<void, decltype(&GDALDestroyGenImgProjTransformer)> transformer(
        GDALCreateGenImgProjTransformer2(&dataset, nullptr, options.data()),
        &GDALDestroyGenImgProjTransformer);
    if (!transformer)
        return std::nullopt;
    std::vector<Point> points = edgeOf(dataset.GetRasterXSize(), dataset.GetRasterYSize());
    std::vector<double> x;
    std::vector<double> y;
    for (const Point& point : points) {
        x.push_back(point.first);
        y.push_back(point.second);
    }
    std::vector<double> z(points.size());
    std::vector<int> good(points.size());
    GDALGenImgProjTransform(transformer.get(), FALSE, static_cast<int>(points.size()), x.data(), y.data(),
                            z.data(), good.data());
    for (std::size_t i = 0; i < points.size(); ++i) {
        constexpr double kRounding = 1e-6;
        if (good[i] == 0 || !(std::abs(x[i]) <= 720) || !(std::abs(y[i]) <= 90 + kRounding))
            return std::nullopt;
        points[i] = {x[i], std::clamp(y[i], -90.0, 90.0)};
    }
    return points;
}

/// Makes the longitudes of neighbours differ by less than half a turn. Returns the difference of the last
/// point's neighbour and the first, which is a turn for a ring around a pole.
double unroll(std::vector<Point>& ring)
{
    double last = ring.front().first;
    for (auto& [x, y] : ring) {
        x -= 360 * std::round((x - last) / 360);
        last = x;
    }
    const double first = ring.front().first;
    return first - 360 * std::round((first - last) / 360) - first;
}

/// Whether the points of a side of the ring lie on the line from its start to its end, as well as anyone can
/// see. A side starts at a corner and ends at the next one.
bool isStraight(const std::vector<Point>& ring, std::size_t side)
{
    constexpr double kVisible = 1e-4; // of the side's length
    const auto& [x, y] = ring[side];
    const auto& [endX, endY] = ring[(side + kPointsOfEdge) % ring.size()];
    const double length = std::hypot(endX - x, endY - y);
    for (std::size_t i = side + 1; i < side + kPointsOfEdge; ++i) {
        const double across = (ring[i].first - x) * (endY - y) - (ring[i].second - y) * (endX - x);
        if (std::abs(across) > kVisible * length * length)
            return false;
    }
    return true;
}

/// Removes the points of straight sides.
std::vector<Point> simplified(const std::vector<Point>& ring)
{
    std::vector<Point> points;
    for (std::size_t side = 0; side < ring.size(); side += kPointsOfEdge)
        for (std::size_t i = side; i < side + (isStraight(ring, side) ? 1 : kPointsOfEdge); ++i)
            points.push_back(ring[i]);
    return points;
}

void placeOnGlobe(std::vector<Point> ring, image::Image& facts)
{
    const bool aroundPole = unroll(ring) != 0;
    const auto byX = std::minmax_element(ring.begin(), ring.end());
    const double west = byX.first->first;
    const double east = byX.second->first;
    double south = 90;
    double north = -90;
    for (const auto& [x, y] : ring) {
        south = std::min(south, y);
        north = std::max(north, y);
    }
    image::Bounds& bounds = *facts.mutable_geographic_bounds();
    if (aroundPole)
        (south + north > 0 ? north : south) = south + north > 0 ? 90 : -90;
    bounds.set_south(south);
    bounds.set_north(north);
    const double turns = 360 * std::floor((west + 180) / 360);
    const bool whole = aroundPole || east - west >= 360;
    bounds.set_west(whole ? -180 : west - turns);
    bounds.set_east(whole ? 180 : east - turns > 180 ? east - turns - 360 : east - turns);
    if (aroundPole)
        return;

    ring = simplified(ring);
    double area = 0; // twice; positive if counterclockwise
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const auto& [x, y] = ring[i];
        const auto& [nextX, nextY] = ring[(i + 1) % ring.size()];
        area += x * nextY - nextX * y;
    }
    if (area < 0)
        std::reverse(ring.begin() + 1, ring.end());
    ring.push_back(ring.front());
    for (const auto& [x, y] : ring) {
        facts.add_footprint(std::round((x - turns) * kFootprintUnits) / kFootprintUnits);
        facts.add_footprint(std::round(y * kFootprintUnits) / kFootprintUnits);
    }
}

} // namespace

void describePlace(GDALDataset& dataset, image::Image& facts)
{
    if (const auto transform = transformOf(dataset)) {
        facts.set_reference_system(systemOf(dataset));
        facts.mutable_transform()->Add(transform->begin(), transform->end());
        *facts.mutable_bounds() = boundsOf(*transform, facts.width(), facts.height());
    }
    if (auto edge = geographicEdge(dataset))
        placeOnGlobe(std::move(*edge), facts);
}

} // namespace centre
