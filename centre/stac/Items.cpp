#include "centre/stac/Items.h"

#include "centre/database/Sql.h"
#include "centre/stac/CatalogFilter.h"
#include "centre/stac/Instant.h"
#include "centre/stac/ItemSql.h"
#include "centre/stac/ItemWriter.h"
#include "centre/store/Ownership.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <set>

namespace centre {

namespace {

/// More collections of a kind than these are first looked through for those in the bounds.
constexpr std::ptrdiff_t kFewCollections = 4;
constexpr std::size_t kMostBesides = 30;

/// Returns the record of an item's identifier, "sat-12"; 0 if it is not of the kind.
std::uint32_t recordIdOf(const std::string& itemId, const RecordKind& kind)
{
    const std::string start = kind.name + "-";
    std::uint32_t id = 0;
    const char* const end = itemId.data() + itemId.size();
    if (itemId.rfind(start, 0) != 0 || std::from_chars(itemId.data() + start.size(), end, id).ptr != end ||
        itemId[start.size()] == '0')
        return 0;
    return id;
}

Statement::Identifiers idsOfKind(const ItemSearch& search, const RecordKind& kind)
{
    Statement::Identifiers ids;
    if (search.ids)
        for (const std::string& itemId : *search.ids)
            if (const std::uint32_t id = recordIdOf(itemId, kind))
                ids.push_back(id);
    return ids;
}

/// The disks that the caller may read, and their boxes.
DiskBoxes readableDisks(Connection& connection, const User& user)
{
    static const Sql sql("SELECT id, kesta_code FROM disk WHERE " + readableRow("disk"));
    Statement& row = connection.statement(sql);
    const ResetAtEnd resetAtEnd(row);
    row.bindAll(user.companyId);
    DiskBoxes disks;
    while (row.step())
        disks.emplace(row.id(0), row.text(1) ? std::optional(row.string(1)) : std::nullopt);
    return disks;
}

/// Selects the files beside main files whose names differ from theirs in what follows the last dot: a.tfw,
/// a.tif.ovr and a.xml beside a.tif.
std::string besidesSql(const Dialect& dialect)
{
    const std::string stem = "rtrim(main.name, replace(main.name, '.', ''))";
    return "SELECT main.id, beside.name, beside.size, beside.digest FROM " + dialect.wantedIds(":ids") +
           " AS wanted " + dialect.orderedJoin + " file AS main ON main.id = wanted.value " +
           dialect.orderedJoin + " file AS beside ON beside.parent_id = main.parent_id AND beside.name > " +
           stem + " AND beside.name < substr(" + stem + ", 1, length(" + stem +
           ") - 1) || '/' WHERE beside.id <> main.id AND " + stem + " <> '' ORDER BY beside.name";
}

} // namespace

struct Items::Page
{
    std::size_t limit;
    DiskBoxes disks;
    std::vector<ItemDraft> items;
    std::optional<ItemPlace> last;
    bool isFull = false; ///< and another item follows
};

Items::Items(Connection& connection, const User& user, std::string root, const AssetAddressesOf& addressesOf)
    : m_Connection(connection), m_User(user), m_Root(std::move(root)), m_AddressesOf(addressesOf)
{
}

/// Returns the collections that may have what a search looks for, from the page's first on.
std::vector<Collection> Items::candidates(const ItemSearch& search,
                                          const std::vector<Collection>& collections)
{
    std::vector<Collection> found;
    for (const Collection& each : collections) {
        const bool isBefore = search.after && each.typeId < search.after->typeId;
        const bool isWanted = !search.collections ||
                              std::find(search.collections->begin(), search.collections->end(), each.id()) !=
                                  search.collections->end();
        if (!isBefore && isWanted && (!search.ids || !idsOfKind(search, *each.kind).empty()))
            found.push_back(each);
    }
    if (!search.bounds)
        return found;
    for (const RecordKind& kind : recordKinds()) {
        const auto isOfKind = [&kind](const Collection& each) { return each.kind == &kind; };
        if (std::count_if(found.begin(), found.end(), isOfKind) <= kFewCollections)
            continue;
        KeptStatement inBounds(m_Connection,
                               "SELECT DISTINCT type_id FROM (" +
                                   m_Connection.database().dialect().inBounds(kind.name, kind.idColumn()) +
                                   ") AS place JOIN " + kind.name + " ON " + kind.idColumn() + " = place.id");
        const ResetAtEnd resetAtEnd(*inBounds);
        bindSearch(*inBounds, search, {});
        std::set<std::uint32_t> types;
        while ((*inBounds).step())
            types.insert((*inBounds).id(0));
        found.erase(std::remove_if(found.begin(), found.end(),
                                   [&](const Collection& each) {
                                       return isOfKind(each) && types.count(each.typeId) == 0;
                                   }),
                    found.end());
    }
    return found;
}

void Items::findOfCollection(const ItemSearch& search, const Collection& collection, Page& page)
{
    FilterSql filter;
    if (!search.filter.is_null())
        filter = filterSql(search.filter, *collection.kind);
    KeptStatement kept(
        m_Connection, itemSql(*collection.kind, m_Connection.database().dialect(), search, filter.condition));
    Statement& row = *kept;
    const ResetAtEnd resetAtEnd(row);
    const bool goesOn = search.after && search.after->typeId == collection.typeId;
    bindNamed(row, ":type", collection.typeId);
    bindNamed(row, ":after", goesOn ? search.after->recordId : 0);
    bindNamed(row, ":limit", page.limit - page.items.size() + 1);
    bindSearch(row, search, idsOfKind(search, *collection.kind));
    bindNamed(row, ":project", collection.project);
    bindNamed(row, ":collection", collection.id());
    for (const auto& [name, value] : filter.parameters)
        bindNamed(row, name.c_str(), value);
    const ItemWriter writer(collection, m_Root, page.disks, m_AddressesOf);
    while (row.step()) {
        if (page.items.size() == page.limit) {
            page.isFull = true;
            return;
        }
        page.items.push_back(writer.write(row));
        page.last = {collection.typeId, row.id(kItemId)};
    }
}

void Items::addBesides(Page& page)
{
    std::map<std::uint32_t, std::vector<ItemDraft*>> byMainFile;
    Statement::Identifiers ids;
    for (ItemDraft& item : page.items)
        if (item.mainFile && byMainFile[*item.mainFile].empty()) {
            ids.push_back(*item.mainFile);
            byMainFile[*item.mainFile].push_back(&item);
        } else if (item.mainFile) {
            byMainFile[*item.mainFile].push_back(&item);
        }
    if (ids.empty())
        return;
    KeptStatement kept(m_Connection, besidesSql(m_Connection.database().dialect()));
    Statement& row = *kept;
    const ResetAtEnd resetAtEnd(row);
    bindNamed(row, ":ids", ids);
    while (row.step())
        for (ItemDraft* item : byMainFile[row.id(0)])
            if (item->besides++ < kMostBesides)
                appendAsset(*item, {item->folderId, row.string(1), item->box}, row.integer(2), m_AddressesOf);
}

ItemPage Items::find(const ItemSearch& search, const std::vector<Collection>& collections)
{
    Page page{search.limit, readableDisks(m_Connection, m_User), {}, std::nullopt};
    for (const Collection& collection : candidates(search, collections)) {
        findOfCollection(search, collection, page);
        if (page.isFull)
            break;
    }
    addBesides(page);
    ItemPage found;
    for (ItemDraft& item : page.items)
        found.items.push_back(finished(std::move(item)));
    if (page.isFull)
        found.last = page.last;
    return found;
}

} // namespace centre
