#ifndef LUMO_CENTRE_STAC_ITEMWRITER_H
#define LUMO_CENTRE_STAC_ITEMWRITER_H

#include "centre/database/Statement.h"
#include "centre/stac/Collections.h"
#include "centre/stac/Items.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace centre {

using DiskBoxes = std::map<std::uint32_t, std::optional<std::string>>;

/// An item as JSON, whose list of assets is still open.
struct ItemDraft
{
    std::string json;
    std::optional<std::uint32_t> mainFile; ///< that the caller may read
    std::uint32_t folderId = 0;            ///< of the main file
    std::optional<std::string> box;
    std::size_t besides = 0; ///< how many other assets follow
};

/// Writes the items of one collection from the rows of `itemSql`. The arguments must outlive the object.
class ItemWriter
{
public:
    /// `disks` are those that the caller may read: other files are no assets.
    ItemWriter(const Collection& collection, const std::string& root, const DiskBoxes& disks,
               const AssetAddressesOf& addressesOf);

    ItemDraft write(Statement& row) const;

private:
    void writeProperties(std::string& json, Statement& row, const std::string& projection) const;

    const RecordKind& m_Kind;
    const DiskBoxes& m_Disks;
    const AssetAddressesOf& m_AddressesOf;
    const std::string m_Self;        ///< the address of an item without its number
    std::string m_CollectionAndRoot; ///< the links to them
    std::string m_Start;             ///< of the properties
    std::vector<std::string> m_FieldNames;
};

/// Adds a file beside the main file as an asset.
void appendAsset(ItemDraft& item, const AssetFile& file, std::optional<std::int64_t> size,
                 const AssetAddressesOf& addressesOf);

/// Returns the item as JSON.
std::string finished(ItemDraft item);

/// Returns the properties of the projection extension, each after a comma, of a file whose image was
/// analysed: from "GTiff 320x180x3" and "EPSG:4326 west 70 south 10 east 150 north 55". Returns an empty text
/// for others.
std::string projectionProperties(const std::string& format, const std::string& placement);

} // namespace centre

#endif
