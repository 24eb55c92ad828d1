#ifndef LUMO_CENTRE_STAC_ITEMS_H
#define LUMO_CENTRE_STAC_ITEMS_H

#include "centre/stac/Collections.h"
#include "centre/stac/ItemSearch.h"
#include "centre/store/Connection.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace centre {

/// A file of a record.
struct AssetFile
{
    std::uint32_t folderId;
    std::string name;
    std::optional<std::string> box; ///< the code of the box that holds it
};

/// The addresses of an asset and of its quick look; empty where there is none.
struct AssetAddresses
{
    std::string file;
    std::string quickLook;
};
using AssetAddressesOf = std::function<AssetAddresses(const AssetFile& file)>;

struct ItemPage
{
    std::vector<std::string> items; ///< as JSON
    std::optional<ItemPlace> last;  ///< of a page that others follow
};

/// Finds items and writes them, for one caller on one connection.
class Items
{
public:
    /// `root` is the address of the landing page. The arguments must outlive the object.
    Items(Connection& connection, const User& user, std::string root, const AssetAddressesOf& addressesOf);

    /// Returns the page of a search. Throws HttpError(400) for a filter that is not valid.
    ItemPage find(const ItemSearch& search, const std::vector<Collection>& collections);

private:
    struct Draft;
    struct Page;

    void findOfCollection(const ItemSearch& search, const Collection& collection, Page& page);
    void addBesides(Page& page);
    std::vector<Collection> candidates(const ItemSearch& search, const std::vector<Collection>& collections);

    Connection& m_Connection;
    const User& m_User;
    const std::string m_Root;
    const AssetAddressesOf& m_AddressesOf;
};

} // namespace centre

#endif
