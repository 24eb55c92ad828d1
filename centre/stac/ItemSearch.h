#ifndef LUMO_CENTRE_STAC_ITEMSEARCH_H
#define LUMO_CENTRE_STAC_ITEMSEARCH_H

#include "centre/http/Http.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace centre {

/// In degrees; east is beyond 180 where the bounds cross the date line.
struct SearchBounds
{
    double west;
    double south;
    double east;
    double north;
};

/// A place in the order of items: by collection, and in it by record. Pages follow one another by it, so an
/// item that is registered meanwhile moves no other to another page.
struct ItemPlace
{
    std::uint32_t typeId;
    std::uint32_t recordId;
};

/// What a search asks for. All conditions must match.
struct ItemSearch
{
    static constexpr std::size_t kUsualLimit = 100;
    static constexpr std::size_t kMostLimit = 10000;

    std::optional<SearchBounds> bounds;
    std::optional<std::pair<std::string, std::string>> days; ///< the first and the last, YYYY-MM-DD
    std::optional<std::vector<std::string>> ids;
    std::optional<std::vector<std::string>> collections;
    nlohmann::json filter; ///< of CQL2; null: none
    std::size_t limit = kUsualLimit;
    std::optional<ItemPlace> after;
};

/// Reads a search from the query of a GET, or the body of a POST. Throws HttpError(400).
ItemSearch searchOfQuery(const HttpRequest& request);
ItemSearch searchOfBody(const nlohmann::json& body);

/// Returns the body of a POST, an object. Throws HttpError(400).
nlohmann::json parsedBody(const HttpRequest& request);

/// A place as the token of a page, and the place of a token. Throws HttpError(400).
std::string pageToken(const ItemPlace& place);
ItemPlace placeOfToken(const std::string& token);

/// The bounds of a geometry of GeoJSON. Throws HttpError(400).
SearchBounds boundsOfGeometry(const nlohmann::json& geometry);

} // namespace centre

#endif
