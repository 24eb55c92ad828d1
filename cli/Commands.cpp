#include "cli/Commands.h"

#include "cli/DisplayText.h"
#include "cli/ExitCode.h"
#include "cli/Records.h"

namespace cli {

namespace {

Listing listingOf(Catalogue& catalogue, const Found& found)
{
    if (found.kind == Place::Kind::File)
        return {{}, {found.file}};
    const unsigned int folderID = catalogue.folderOf(found);
    return {catalogue.foldersIn(folderID), catalogue.filesIn(folderID)};
}

void printTable(const Table& table, bool empty, const char* whenEmpty)
{
    print(empty ? std::string(whenEmpty) + "\n" : table.text(listWidth()));
}

std::string parentOf(unsigned int folderID)
{
    return folderID == 0 ? "- (the disk's top folder)" : identifierText("folder", folderID);
}

void printRecord(const Found& found, const Text& path)
{
    Table table({"", ""});
    const auto name = [&](const char* kind, unsigned int id, const Text& text) {
        table.add({"Identifier", identifierText(kind, id)});
        table.add({"Name", shownName(text)});
        table.add({"Path", path.value_or("-")});
    };
    const auto texts = [&table](const auto& record) {
        table.add({"Short text", shownText(record.shortText)});
        table.add({"Long text", shownText(record.longText)});
    };
    if (found.kind == Place::Kind::Disk) {
        name("disk", found.disk.diskID, found.disk.diskName);
        table.add({"Storage box", shownText(found.disk.kestaCode)});
        table.add({"Root", shownText(found.disk.rootPath)});
        table.add({"Reference", found.disk.refID == kNone ? "-" : std::to_string(found.disk.refID)});
    } else if (found.kind == Place::Kind::Folder) {
        name("folder", found.folder.folderID, found.folder.folderName);
        table.add({"Disk", identifierText("disk", found.folder.diskID)});
        table.add({"Parent", parentOf(found.folder.parentID)});
        texts(found.folder);
    } else {
        name("file", found.file.fileID, found.file.fileName);
        table.add({"Folder", identifierText("folder", found.file.parentID)});
        texts(found.file);
    }
    print(table.text());
}

Json recordJson(const Found& found)
{
    switch (found.kind) {
    case Place::Kind::Disk:
        return wholeJson(found.disk);
    case Place::Kind::Folder:
        return wholeJson(found.folder);
    default:
        return wholeJson(found.file);
    }
}

} // namespace

void printIdentifier(const Session& session, unsigned int id)
{
    print(session.json ? jsonText({{"id", id}}) : std::to_string(id) + "\n");
}

void listDisks(Session& session)
{
    const std::vector<Disk> disks = session.catalogue.disks();
    if (session.json) {
        print(jsonText(listedJson(disks)));
        return;
    }
    Table table({"IDENTIFIER", "NAME", "BOX", "ROOT"});
    for (const Disk& disk : disks) {
        table.add({identifierText("disk", disk.diskID), shownName(disk.diskName), shownText(disk.kestaCode),
                   shownText(disk.rootPath)});
    }
    printTable(table, disks.empty(), "(the company has no disks)");
}

void printListing(const Session& session, const Listing& listing)
{
    if (session.json) {
        print(jsonText({{"folders", listedJson(listing.folders)}, {"files", listedJson(listing.files)}}));
        return;
    }
    Table table({"IDENTIFIER", "NAME"});
    for (const Folder& folder : listing.folders)
        table.add({identifierText("folder", folder.folderID), shownName(folder.folderName)});
    for (const File& file : listing.files)
        table.add({identifierText("file", file.fileID), shownName(file.fileName)});
    printTable(table, listing.folders.empty() && listing.files.empty(), "(no folders or files)");
}

void listPlace(Session& session, const Place& place)
{
    const Found found = session.catalogue.find(place);
    if (found.kind == Place::Kind::Path) {
        listDisks(session);
        return;
    }
    printListing(session, listingOf(session.catalogue, found));
}

void showRecord(Session& session, const Place& place)
{
    const Found found = session.catalogue.find(place);
    if (found.kind == Place::Kind::Path) {
        refuse("'/' stands for all disks and has no record: name a disk, a folder or a "
               "file; 'lumo disks' lists the disks");
    }
    const Text path = session.catalogue.pathOf(found);
    if (session.json) {
        Json record = recordJson(found);
        record["path"] = textJson(path);
        print(jsonText(record));
        return;
    }
    printRecord(found, path);
}

} // namespace cli
