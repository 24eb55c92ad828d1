#include "lumo/client/Catalogue.h"

#include "client/EntryList.h"
#include "client/Link.h"
#include "client/RecordText.h"
#include "lumo/core/LumoDataMgr.h"

namespace lumo {

using internal::Call;
using internal::notFound;

namespace {

/// More than any real tree is deep; a catalogue whose folders contain each other ends here.
constexpr int kDeepest = 1024;

std::string pathText(const Place& place, std::size_t count)
{
    std::string path;
    for (std::size_t i = 0; i < count; ++i)
        path += "/" + place.names()[i];
    return path;
}

std::optional<Entry> folderOf(const Call& call, FolderId id)
{
    return internal::entryOf<tagFolderTable>(call, &CLumoDataMgr::getFolder, id.number());
}

std::optional<Entry> diskOf(const Call& call, DiskId id)
{
    return internal::entryOf<tagDiskTable>(call, &CLumoDataMgr::getDisk, id.number());
}

std::optional<Entry> fileOf(const Call& call, FileId id)
{
    return internal::entryOf<tagFileTable>(call, &CLumoDataMgr::getFile, id.number());
}

std::optional<Entry> diskNamed(const Call& call, const std::string& name)
{
    auto record = internal::markedRecord<tagDiskTable>();
    return call.answered(call->getDisk(QString::fromStdString(name), record))
               ? std::optional(internal::entryFrom(record))
               : std::nullopt;
}

std::optional<Entry> fileNamed(const Call& call, FolderId parent, const std::string& name)
{
    auto record = internal::markedRecord<tagFileTable>();
    return call.answered(call->getFileByName(parent.number(), QString::fromStdString(name), record))
               ? std::optional(internal::entryFrom(record))
               : std::nullopt;
}

/// Not set for a folder that isn't there.
FolderId folderNamed(const Call& call, DiskId disk, FolderId parent, const std::string& name)
{
    const FolderId id(call->getFolderID(disk.number(), parent.number(), QString::fromStdString(name)));
    // The look-up returns the same for a folder that isn't there and for a failure, which has a reason.
    if (!id.isSet() && !Call::reason().text.empty())
        call.fail();
    return id;
}

FolderId topFolder(const Call& call, const Entry& disk)
{
    const FolderId id = disk.name ? folderNamed(call, disk.disk, FolderId(0), *disk.name) : FolderId();
    if (id.isSet())
        return id;
    // A name that the record doesn't hold whole finds nothing; the disk's identifier does.
    for (const Entry& folder : internal::foldersBelow(call, FolderId(0)))
        if (folder.disk == disk.disk)
            return folder.folder;
    notFound("disk " + std::to_string(disk.disk.number()) + " has no top folder");
}

Entry findIdentifier(const Call& call, const Place& place)
{
    const struct
    {
        Place::Kind kind;
        const char* word;
    } kWords[] = {{Place::Kind::Disk, "disk"}, {Place::Kind::Folder, "folder"}, {Place::Kind::File, "file"}};
    const auto found = place.kind() == Place::Kind::Disk     ? diskOf(call, DiskId(place.number()))
                       : place.kind() == Place::Kind::Folder ? folderOf(call, FolderId(place.number()))
                                                             : fileOf(call, FileId(place.number()));
    for (const auto& known : kWords)
        if (known.kind == place.kind() && !found)
            notFound(std::string("the catalogue has no ") + known.word + " " +
                     std::to_string(place.number()));
    return *found;
}

/// Throws for a folder that looking it up did not find although the centre lists it: the look-up returns the
/// same for an error of the centre and an unknown name.
void requireUnlisted(const Call& call, FolderId parent, const std::string& name, const std::string& path)
{
    for (const Entry& folder : internal::foldersBelow(call, parent))
        if (folder.name == name)
            throw Error(Error::Kind::Refused, "the centre lists '" + path + "' but failed to look it up");
}

/// The entry of a path of two names or more.
Entry findBelow(const Call& call, const Entry& disk, const Place& place)
{
    const std::size_t count = place.names().size();
    FolderId parent = topFolder(call, disk);
    for (std::size_t i = 1; i < count; ++i) {
        const std::string& name = place.names()[i];
        const FolderId folder = folderNamed(call, disk.disk, parent, name);
        if (folder.isSet()) {
            parent = folder;
            continue;
        }
        const auto file = fileNamed(call, parent, name);
        const std::string path = pathText(place, i + 1);
        if (!file) {
            requireUnlisted(call, parent, name, path);
            notFound("there is no '" + path + "'");
        }
        if (i + 1 < count || place.mustBeFolder())
            notFound("'" + path + "' is a file, not a folder");
        return *file;
    }
    return findIdentifier(call, parent);
}

Entry::Text pathOfFolder(const Call& call, FolderId id)
{
    std::string path;
    for (int depth = 0; depth < kDeepest; ++depth) {
        const auto folder = folderOf(call, id);
        if (!folder || !folder->name)
            return {};
        path.insert(0, "/" + *folder->name);
        if (folder->parent == FolderId(0))
            return path;
        id = folder->parent;
    }
    return {};
}

} // namespace

Catalogue::Catalogue(std::shared_ptr<internal::Link> link) : m_Link(std::move(link))
{
}

Entry Catalogue::find(const Place& place) const
{
    const Call call(*m_Link);
    if (place.kind() != Place::Kind::Path)
        return findIdentifier(call, place);
    if (place.isRoot())
        internal::refuse("'/' means all disks: name a disk, a folder or a file");
    const auto disk = diskNamed(call, place.names()[0]);
    if (!disk)
        notFound("there is no disk '" + place.names()[0] + "'");
    return place.names().size() == 1 ? *disk : findBelow(call, *disk, place);
}

Catalogue::Part Catalogue::findPart(Place place) const
{
    std::string missing;
    for (;;) {
        try {
            return {find(place), missing};
        } catch (const Error& error) {
            if (error.kind() != Error::Kind::NotFound || place.names().size() < 2)
                throw;
        }
        missing.insert(0, missing.empty() ? "" : "/");
        missing.insert(0, place.names().back());
        place = place.parent();
    }
}

std::vector<Entry> Catalogue::disks() const
{
    return internal::allDisks(Call(*m_Link));
}

std::vector<Entry> Catalogue::folders(FolderId folder) const
{
    return internal::foldersBelow(Call(*m_Link), folder);
}

std::vector<Entry> Catalogue::files(FolderId folder) const
{
    return internal::filesBelow(Call(*m_Link), folder);
}

std::vector<Entry> Catalogue::folders(ProjectId project, CommentId comment) const
{
    const Call call(*m_Link);
    return internal::entries<tagFolderTable>(call, &CLumoDataMgr::getFolder, [&](auto& found) {
        return call->getFolderByDataAndComment(project.number(), comment.number(), found);
    });
}

std::vector<Entry> Catalogue::files(ProjectId project, CommentId comment) const
{
    const Call call(*m_Link);
    return internal::entries<tagFileTable>(call, &CLumoDataMgr::getFile, [&](auto& found) {
        return call->getFileByDataAndComment(project.number(), comment.number(), found);
    });
}

FolderId Catalogue::folderOf(const Entry& entry) const
{
    if (entry.kind == Entry::Kind::File)
        internal::refuse("'" + entry.name.value_or("") + "' is a file, not a folder");
    return entry.kind == Entry::Kind::Disk ? topFolder(Call(*m_Link), entry) : entry.folder;
}

Entry Catalogue::diskOf(const Entry& entry) const
{
    if (entry.kind == Entry::Kind::Disk)
        return entry;
    const DiskId id = entry.kind == Entry::Kind::Folder ? entry.disk : find(entry.parent).disk;
    return find(id);
}

Entry::Text Catalogue::pathOf(const Entry& entry) const
{
    const Call call(*m_Link);
    switch (entry.kind) {
    case Entry::Kind::Disk:
        return entry.name ? Entry::Text("/" + *entry.name) : Entry::Text();
    case Entry::Kind::Folder:
        return pathOfFolder(call, entry.folder);
    case Entry::Kind::File:
        break;
    }
    const Entry::Text path = entry.name ? pathOfFolder(call, entry.parent) : Entry::Text();
    return path ? Entry::Text(*path + "/" + *entry.name) : Entry::Text();
}

FolderId Catalogue::makeFolder(const Entry& parent, const std::string& path) const
{
    const DiskId disk = diskOf(parent).disk;
    const FolderId folder = folderOf(parent);
    const Call call(*m_Link);
    const FolderId made(call->createFolder(disk.number(), folder.number(), QString::fromStdString(path)));
    call.require(made.isSet() && made != FolderId(0));
    return made;
}

} // namespace lumo
