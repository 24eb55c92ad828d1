#ifndef LUMO_CENTRE_STAC_COLLECTIONS_H
#define LUMO_CENTRE_STAC_COLLECTIONS_H

#include "centre/store/Connection.h"
#include "centre/store/ConnectionPool.h"
#include "centre/store/RecordKinds.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace centre {

/// A class of data in a project, whose records are the items.
struct Collection
{
    std::uint32_t typeId;
    const RecordKind* kind;
    std::string dataType;
    std::string description; ///< may be empty
    std::string project;

    std::string id() const { return "type-" + std::to_string(typeId); }
};

/// Returns the collections that the user may read, in the order of their numbers.
std::vector<Collection> readableCollections(Connection& connection, const User& user);

/// The extents of collections, which take a look at each record. Each is kept for a minute. Thread-safe.
class CollectionExtents
{
public:
    /// "extent" and "summaries" of a collection.
    nlohmann::json of(Connection& connection, const Collection& collection);

private:
    using Clock = std::chrono::steady_clock;
    struct Known
    {
        nlohmann::json fields;
        Clock::time_point until;
    };

    std::mutex m_Mutex;
    std::map<std::uint32_t, Known> m_Known; ///< by type
};

/// Returns the document of a collection. `root` is the address of the landing page.
nlohmann::json collectionDocument(const Collection& collection, const nlohmann::json& extentAndSummaries,
                                  const std::string& root);

/// A link of a document.
nlohmann::json linkTo(const std::string& relation, const std::string& address, const std::string& mediaType,
                      const std::string& title = {});

constexpr char kStacVersion[] = "1.0.0";
constexpr char kJson[] = "application/json";
constexpr char kGeoJson[] = "application/geo+json";
constexpr char kSchemaJson[] = "application/schema+json";
constexpr char kQueryables[] = "http://www.opengis.net/def/rel/ogc/1.0/queryables";

} // namespace centre

#endif
