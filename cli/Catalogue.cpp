#include "cli/Catalogue.h"

#include "cli/Connection.h"
#include "cli/ExitCode.h"

#include "lumo/core/LumoDataMgr.h"
#include "lumo/core/TextEncoding.h"

#include <algorithm>
#include <cstring>
#include <tuple>

namespace cli {

namespace {

/// A text that doesn't fit its field leaves the field as it was; one that fits always ends in NUL. So
/// a mark in the last byte, set before the call, tells the one from the other.
template <std::size_t... Sizes>
void mark(char (&... fields)[Sizes])
{
    ((fields[Sizes - 1] = 1), ...);
}

tagDiskTable markedDisk()
{
    tagDiskTable record{};
    mark(record.kestaCode, record.diskName, record.rootPath);
    return record;
}

tagFolderTable markedFolder()
{
    tagFolderTable record{};
    mark(record.folderName, record.shortText, record.longText);
    return record;
}

tagFileTable markedFile()
{
    tagFileTable record{};
    mark(record.fileName, record.shortText, record.longText);
    return record;
}

template <std::size_t Size>
Text marked(const char (&field)[Size])
{
    return field[Size - 1] == 1 ? Text() : Text(convertToUtf8(field));
}

/// In a listing a field that was left as it was shows the text of the record before, or nothing.
/// Names are unique in one listing, so equal ones make it likely.
Text listed(const char* field, const char* previous)
{
    const bool leftOver = *field == '\0' || (previous != nullptr && std::strcmp(field, previous) == 0);
    return leftOver ? Text() : Text(convertToUtf8(field));
}

Disk fromRecord(const tagDiskTable& record)
{
    return {record.diskID, record.refID, marked(record.kestaCode), marked(record.diskName),
            marked(record.rootPath)};
}

Folder fromRecord(const tagFolderTable& record)
{
    return {record.folderID,          record.diskID,          record.parentID, marked(record.folderName),
            marked(record.shortText), marked(record.longText)};
}

File fromRecord(const tagFileTable& record)
{
    return {record.fileID, record.parentID, marked(record.fileName), marked(record.shortText),
            marked(record.longText)};
}

/// What a listing tells, but the name.
Folder namelessRow(const tagFolderTable& record)
{
    return {record.folderID, record.diskID, record.parentID, {}, {}, {}};
}

File namelessRow(const tagFileTable& record)
{
    return {record.fileID, record.parentID, {}, {}, {}};
}

const char* nameField(const tagFolderTable& record)
{
    return record.folderName;
}

const char* nameField(const tagFileTable& record)
{
    return record.fileName;
}

/// By name, then identifier; names that are not known come last.
template <class Record>
void sortByName(std::vector<Record>& records, Text Record::*name, unsigned int Record::*id)
{
    std::sort(records.begin(), records.end(), [name, id](const Record& left, const Record& right) {
        return std::make_tuple(!(left.*name), left.*name, left.*id) <
               std::make_tuple(!(right.*name), right.*name, right.*id);
    });
}

std::string joined(const Place& place, std::size_t count)
{
    std::string path;
    for (std::size_t i = 0; i < count; ++i)
        path += "/" + place.components[i];
    return path;
}

[[noreturn]] void notFound(const std::string& message)
{
    throw Failure(ExitCode::PlaceNotFound, message);
}

} // namespace

const Text& nameOf(const Found& found)
{
    switch (found.kind) {
    case Place::Kind::Disk:
        return found.disk.diskName;
    case Place::Kind::Folder:
        return found.folder.folderName;
    default:
        return found.file.fileName;
    }
}

QPair<int, unsigned int> placeOf(const Found& found)
{
    switch (found.kind) {
    case Place::Kind::Disk:
        return {DATA_TYPE_DISK, found.disk.diskID};
    case Place::Kind::Folder:
        return {DATA_TYPE_FOLDER, found.folder.folderID};
    default:
        return {DATA_TYPE_FILE, found.file.fileID};
    }
}

Catalogue::Catalogue(CLumoDataMgr& manager, Journal& journal) : m_Manager(manager), m_Journal(journal)
{
}

bool Catalogue::answered(ENUM_RET_TYPE result) const
{
    if (result == RET_FAILED)
        fail();
    return result != RET_NULL;
}

void Catalogue::fail() const
{
    requestFailed(m_Journal);
}

std::optional<Disk> Catalogue::disk(unsigned int id)
{
    tagDiskTable record = markedDisk();
    return answered(m_Manager.getDisk(id, record)) ? std::optional(fromRecord(record)) : std::nullopt;
}

std::optional<Disk> Catalogue::disk(const std::string& name)
{
    tagDiskTable record = markedDisk();
    return answered(m_Manager.getDisk(QString::fromStdString(name), record))
               ? std::optional(fromRecord(record))
               : std::nullopt;
}

std::optional<Folder> Catalogue::folder(unsigned int id)
{
    tagFolderTable record = markedFolder();
    return answered(m_Manager.getFolder(id, record)) ? std::optional(fromRecord(record)) : std::nullopt;
}

std::optional<File> Catalogue::file(unsigned int id)
{
    tagFileTable record = markedFile();
    return answered(m_Manager.getFile(id, record)) ? std::optional(fromRecord(record)) : std::nullopt;
}

std::optional<File> Catalogue::file(unsigned int parentID, const std::string& name)
{
    tagFileTable record = markedFile();
    return answered(m_Manager.getFileByName(parentID, QString::fromStdString(name), record))
               ? std::optional(fromRecord(record))
               : std::nullopt;
}

unsigned int Catalogue::folderID(unsigned int diskID, unsigned int parentID, const std::string& name)
{
    const unsigned int id = m_Manager.getFolderID(diskID, parentID, QString::fromStdString(name));
    // A folder that isn't there and a failed look-up return alike; a lost call at least is in the log.
    if (id == kNone && m_Journal.lastReason().kind == Reason::Kind::CallFailed)
        fail();
    return id;
}

std::vector<Disk> Catalogue::disks()
{
    QList<tagDiskTable> records;
    answered(m_Manager.getDisk(records));
    std::vector<Disk> disks;
    const tagDiskTable* previous = nullptr;
    for (const tagDiskTable& record : records) {
        Disk row{record.diskID, record.refID,
                 listed(record.kestaCode, previous ? previous->kestaCode : nullptr),
                 listed(record.diskName, previous ? previous->diskName : nullptr),
                 listed(record.rootPath, previous ? previous->rootPath : nullptr)};
        // Box and root may well be those of the disk before; the disk's own record tells.
        if (!row.kestaCode || !row.diskName || !row.rootPath)
            row = disk(record.diskID).value_or(row);
        disks.push_back(row);
        previous = &record;
    }
    sortByName(disks, &Disk::diskName, &Disk::diskID);
    return disks;
}

template <class Row, class Record>
std::vector<Row> Catalogue::listing(const std::function<ENUM_RET_TYPE(QList<Record>&)>& query,
                                    Text Row::*name, unsigned int Row::*id,
                                    std::optional<Row> (Catalogue::*own)(unsigned int))
{
    QList<Record> records;
    answered(query(records));
    std::vector<Row> rows;
    const Record* previous = nullptr;
    for (const Record& record : records) {
        Row row = namelessRow(record);
        row.*name = listed(nameField(record), previous ? nameField(*previous) : nullptr);
        // Two names may become the same text in the code page; the record itself tells.
        if (!(row.*name)) {
            const auto whole = (this->*own)(row.*id);
            row.*name = whole ? (*whole).*name : Text();
        }
        rows.push_back(std::move(row));
        previous = &record;
    }
    sortByName(rows, name, id);
    return rows;
}

std::vector<Folder> Catalogue::folders(const std::function<ENUM_RET_TYPE(QList<tagFolderTable>&)>& query)
{
    return listing(query, &Folder::folderName, &Folder::folderID, &Catalogue::folder);
}

std::vector<File> Catalogue::files(const std::function<ENUM_RET_TYPE(QList<tagFileTable>&)>& query)
{
    return listing(query, &File::fileName, &File::fileID, &Catalogue::file);
}

std::vector<Folder> Catalogue::foldersIn(unsigned int folderID)
{
    return folders([&](auto& found) { return m_Manager.getFolderByParentID(folderID, found); });
}

std::vector<File> Catalogue::filesIn(unsigned int folderID)
{
    return files([&](auto& found) { return m_Manager.getFileByParentID(folderID, found); });
}

std::vector<Folder> Catalogue::foldersWith(unsigned int projectID, unsigned int commentID)
{
    return folders(
        [&](auto& found) { return m_Manager.getFolderByDataAndComment(projectID, commentID, found); });
}

std::vector<File> Catalogue::filesWith(unsigned int projectID, unsigned int commentID)
{
    return files([&](auto& found) { return m_Manager.getFileByDataAndComment(projectID, commentID, found); });
}

unsigned int Catalogue::topFolder(const Disk& disk)
{
    const unsigned int id = disk.diskName ? folderID(disk.diskID, 0, *disk.diskName) : kNone;
    if (id != kNone)
        return id;
    // A name that the record doesn't hold whole finds nothing; the disk's identifier does.
    for (const Folder& folder : foldersIn(0))
        if (folder.diskID == disk.diskID)
            return folder.folderID;
    notFound("disk " + std::to_string(disk.diskID) + " has no top folder");
}

unsigned int Catalogue::folderOf(const Found& found)
{
    return found.kind == Place::Kind::Disk ? topFolder(found.disk) : found.folder.folderID;
}

std::optional<Disk> Catalogue::diskOf(const Found& found)
{
    if (found.kind == Place::Kind::Disk)
        return found.disk;
    const auto parent =
        found.kind == Place::Kind::Folder ? std::optional(found.folder) : folder(found.file.parentID);
    return parent ? disk(parent->diskID) : std::nullopt;
}

Found Catalogue::find(const Place& place)
{
    return place.kind == Place::Kind::Path ? findPath(place) : findIdentifier(place);
}

FoundPart Catalogue::findWithMissing(Place place)
{
    std::string names;
    for (;;) {
        try {
            return {find(place), names};
        } catch (const Failure& failure) {
            if (failure.code() != ExitCode::PlaceNotFound || place.components.size() < 2)
                throw;
        }
        names.insert(0, names.empty() ? "" : "/");
        names.insert(0, place.components.back());
        place.components.pop_back();
    }
}

Found Catalogue::findIdentifier(const Place& place)
{
    Found found;
    found.kind = place.kind;
    if (place.kind == Place::Kind::Disk) {
        if (const auto record = disk(place.id)) {
            found.disk = *record;
            return found;
        }
        notFound("the catalogue has no disk " + std::to_string(place.id));
    }
    if (place.kind == Place::Kind::Folder) {
        if (const auto record = folder(place.id)) {
            found.folder = *record;
            return found;
        }
        notFound("the catalogue has no folder " + std::to_string(place.id));
    }
    if (const auto record = file(place.id)) {
        found.file = *record;
        return found;
    }
    notFound("the catalogue has no file " + std::to_string(place.id));
}

Found Catalogue::findPath(const Place& place)
{
    Found found;
    const std::size_t count = place.components.size();
    if (count == 0)
        return found;
    const auto root = disk(place.components[0]);
    if (!root)
        notFound("there is no disk '" + place.components[0] + "'");
    if (count == 1) {
        found.kind = Place::Kind::Disk;
        found.disk = *root;
        return found;
    }
    return findBelow(*root, place);
}

void Catalogue::requireUnlisted(unsigned int parentID, const std::string& name, const std::string& path)
{
    for (const Folder& listedFolder : foldersIn(parentID))
        if (listedFolder.folderName == name)
            throw Failure(ExitCode::CentreFailed, "the centre lists '" + path + "' but failed to look it up");
}

Found Catalogue::findBelow(const Disk& root, const Place& place)
{
    const std::size_t count = place.components.size();
    unsigned int parent = topFolder(root);
    for (std::size_t i = 1; i < count; ++i) {
        const std::string& name = place.components[i];
        const unsigned int id = folderID(root.diskID, parent, name);
        if (id != kNone) {
            parent = id;
            continue;
        }
        const auto record = file(parent, name);
        const std::string path = joined(place, i + 1);
        if (!record) {
            requireUnlisted(parent, name, path);
            notFound("there is no '" + path + "'");
        }
        if (i + 1 < count || place.folderOnly)
            notFound("'" + path + "' is a file, not a folder");
        Found found;
        found.kind = Place::Kind::File;
        found.file = *record;
        return found;
    }
    return findIdentifier({Place::Kind::Folder, {}, false, parent});
}

Text Catalogue::pathOf(const Found& found)
{
    if (found.kind == Place::Kind::Disk)
        return found.disk.diskName ? Text("/" + *found.disk.diskName) : Text();
    if (found.kind == Place::Kind::Folder)
        return pathOf(found.folder);
    const auto parent = folder(found.file.parentID);
    const Text path = parent ? pathOf(*parent) : Text();
    return path && found.file.fileName ? Text(*path + "/" + *found.file.fileName) : Text();
}

Text Catalogue::pathOf(Folder folderOnPath)
{
    std::string path;
    for (int depth = 0; depth < kDeepest && folderOnPath.folderName; ++depth) {
        path.insert(0, "/" + *folderOnPath.folderName);
        if (folderOnPath.parentID == 0)
            return path;
        const auto parent = folder(folderOnPath.parentID);
        if (!parent)
            break;
        folderOnPath = *parent;
    }
    return {};
}

} // namespace cli
