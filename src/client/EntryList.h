#ifndef LUMO_CLIENT_ENTRYLIST_H
#define LUMO_CLIENT_ENTRYLIST_H

#include "client/Link.h"
#include "client/RecordText.h"
#include "lumo/catalog/StorageRecords.h"
#include "lumo/client/Entry.h"
#include "lumo/core/LumoDataTypes.h"

#include <QList>

#include <functional>
#include <optional>
#include <vector>

class CLumoDataMgr;

/// Disks, folders and files from the records of the manager.
namespace lumo::internal {

/// From records that were marked before the call.
Entry entryFrom(const tagDiskTable& record);
Entry entryFrom(const tagFolderTable& record);
Entry entryFrom(const tagFileTable& record);

template <class Record>
using GetEntry = ENUM_RET_TYPE (CLumoDataMgr::*)(unsigned int, Record&);
template <class Record>
using Query = std::function<ENUM_RET_TYPE(QList<Record>&)>;

/// The record of an identifier; none where there is none.
template <class Record>
std::optional<Entry> entryOf(const Call& call, GetEntry<Record> get, unsigned int id)
{
    auto record = markedRecord<Record>();
    return call.answered((call.manager().*get)(id, record)) ? std::optional(entryFrom(record)) : std::nullopt;
}

/// What a query lists, by name; `get` reads a record whose name the list may not have.
template <class Record>
std::vector<Entry> entries(const Call& call, GetEntry<Record> get, const Query<Record>& query);

std::vector<Entry> allDisks(const Call& call);
std::vector<Entry> foldersBelow(const Call& call, FolderId folder);
std::vector<Entry> filesBelow(const Call& call, FolderId folder);

} // namespace lumo::internal

#endif
