#include "client/EntryList.h"

#include "lumo/core/LumoDataMgr.h"

#include <algorithm>
#include <tuple>

namespace lumo::internal {

namespace {

unsigned int numberOf(const Entry& entry)
{
    switch (entry.kind) {
    case Entry::Kind::Disk:
        return entry.disk.number();
    case Entry::Kind::Folder:
        return entry.folder.number();
    case Entry::Kind::File:
        break;
    }
    return entry.file.number();
}

/// By name, then identifier; names that are not known come last.
void sortByName(std::vector<Entry>& entries)
{
    std::sort(entries.begin(), entries.end(), [](const Entry& left, const Entry& right) {
        return std::forward_as_tuple(!left.name, left.name, numberOf(left)) <
               std::forward_as_tuple(!right.name, right.name, numberOf(right));
    });
}

Entry nameless(const tagDiskTable& record)
{
    Entry entry;
    entry.kind = Entry::Kind::Disk;
    entry.disk = DiskId(record.diskID);
    entry.reference = record.refID;
    return entry;
}

Entry nameless(const tagFolderTable& record)
{
    Entry entry;
    entry.kind = Entry::Kind::Folder;
    entry.folder = FolderId(record.folderID);
    entry.disk = DiskId(record.diskID);
    entry.parent = FolderId(record.parentID);
    return entry;
}

Entry nameless(const tagFileTable& record)
{
    Entry entry;
    entry.kind = Entry::Kind::File;
    entry.file = FileId(record.fileID);
    entry.parent = FolderId(record.parentID);
    return entry;
}

const char* nameField(const tagFolderTable& record)
{
    return record.folderName;
}

const char* nameField(const tagFileTable& record)
{
    return record.fileName;
}

bool maybeIncomplete(const tagDiskTable& record, const tagDiskTable* previous)
{
    return maybeLeftOver(record.kestaCode, previous ? previous->kestaCode : nullptr) ||
           maybeLeftOver(record.diskName, previous ? previous->diskName : nullptr) ||
           maybeLeftOver(record.rootPath, previous ? previous->rootPath : nullptr);
}

} // namespace

Entry entryFrom(const tagDiskTable& record)
{
    Entry entry = nameless(record);
    entry.name = textOf(record.diskName);
    entry.box = textOf(record.kestaCode);
    entry.root = textOf(record.rootPath);
    return entry;
}

Entry entryFrom(const tagFolderTable& record)
{
    Entry entry = nameless(record);
    entry.name = textOf(record.folderName);
    entry.shortText = textOf(record.shortText);
    entry.longText = textOf(record.longText);
    return entry;
}

Entry entryFrom(const tagFileTable& record)
{
    Entry entry = nameless(record);
    entry.name = textOf(record.fileName);
    entry.shortText = textOf(record.shortText);
    entry.longText = textOf(record.longText);
    return entry;
}

std::vector<Entry> allDisks(const Call& call)
{
    QList<tagDiskTable> records;
    call.answered(call->getDisk(records));
    std::vector<Entry> disks;
    const tagDiskTable* previous = nullptr;
    for (const tagDiskTable& record : qAsConst(records)) {
        // The fields of a list are not marked, but end in NUL. Box and root may well be those of the disk
        // before; the disk's own record has the answer.
        const Entry listed = entryFrom(record);
        disks.push_back(
            maybeIncomplete(record, previous)
                ? entryOf<tagDiskTable>(call, &CLumoDataMgr::getDisk, record.diskID).value_or(listed)
                : listed);
        previous = &record;
    }
    sortByName(disks);
    return disks;
}

template <class Record>
std::vector<Entry> entries(const Call& call, GetEntry<Record> get, const Query<Record>& query)
{
    QList<Record> records;
    call.requireWhole(query(records));
    std::vector<Entry> entries;
    entries.reserve(static_cast<std::size_t>(records.size()));
    const Record* previous = nullptr;
    for (const Record& record : qAsConst(records)) {
        Entry entry = nameless(record);
        // Names are unique in a folder, but two may become the same text in the code page; the record itself
        // has the answer.
        if (!maybeLeftOver(nameField(record), previous ? nameField(*previous) : nullptr))
            entry.name = convertToUtf8(nameField(record));
        else if (const auto whole = entryOf<Record>(call, get, numberOf(entry)))
            entry.name = whole->name;
        entries.push_back(std::move(entry));
        previous = &record;
    }
    sortByName(entries);
    return entries;
}

template std::vector<Entry> entries(const Call&, GetEntry<tagFolderTable>, const Query<tagFolderTable>&);
template std::vector<Entry> entries(const Call&, GetEntry<tagFileTable>, const Query<tagFileTable>&);

std::vector<Entry> foldersBelow(const Call& call, FolderId folder)
{
    return entries<tagFolderTable>(call, &CLumoDataMgr::getFolder, [&](auto& found) {
        return call->getFolderByParentID(folder.number(), found);
    });
}

std::vector<Entry> filesBelow(const Call& call, FolderId folder)
{
    return entries<tagFileTable>(call, &CLumoDataMgr::getFile, [&](auto& found) {
        return call->getFileByParentID(folder.number(), found);
    });
}

} // namespace lumo::internal
