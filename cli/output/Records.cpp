#include "cli/output/Records.h"

#include "cli/output/DisplayText.h"

namespace cli {

namespace {

Json identifierJson(unsigned int id)
{
    return id == kNone ? Json(nullptr) : Json(id);
}

} // namespace

std::string shownName(const Text& name)
{
    return name.value_or("(name too long for its record)");
}

std::string shownText(const Text& text)
{
    if (!text)
        return "(too long for its record)";
    return text->empty() ? "-" : *text;
}

Json textJson(const Text& text)
{
    return text ? Json(*text) : Json(nullptr);
}

Json listedJson(const Disk& disk)
{
    return {{"diskID", identifierJson(disk.diskID)},
            {"refID", identifierJson(disk.refID)},
            {"kestaCode", textJson(disk.kestaCode)},
            {"diskName", textJson(disk.diskName)},
            {"rootPath", textJson(disk.rootPath)}};
}

Json listedJson(const Folder& folder)
{
    return {{"folderID", identifierJson(folder.folderID)},
            {"diskID", identifierJson(folder.diskID)},
            {"parentID", identifierJson(folder.parentID)},
            {"folderName", textJson(folder.folderName)}};
}

Json listedJson(const File& file)
{
    return {{"fileID", identifierJson(file.fileID)},
            {"parentID", identifierJson(file.parentID)},
            {"fileName", textJson(file.fileName)}};
}

Json wholeJson(const Disk& disk)
{
    return listedJson(disk);
}

Json wholeJson(const Folder& folder)
{
    Json json = listedJson(folder);
    json["shortText"] = textJson(folder.shortText);
    json["longText"] = textJson(folder.longText);
    return json;
}

Json wholeJson(const File& file)
{
    Json json = listedJson(file);
    json["shortText"] = textJson(file.shortText);
    json["longText"] = textJson(file.longText);
    return json;
}

void printListing(const std::vector<Folder>& folders, const std::vector<File>& files, bool json)
{
    if (json) {
        print(jsonText({{"folders", listedJson(folders)}, {"files", listedJson(files)}}));
        return;
    }
    Table table({"IDENTIFIER", "NAME"});
    for (const Folder& folder : folders)
        table.add({identifierText("folder", folder.folderID), shownName(folder.folderName)});
    for (const File& file : files)
        table.add({identifierText("file", file.fileID), shownName(file.fileName)});
    print(folders.empty() && files.empty() ? "(no folders or files)\n" : table.text(listWidth()));
}

void printIdentifier(unsigned int id, bool json)
{
    print(json ? jsonText({{"id", id}}) : std::to_string(id) + "\n");
}

} // namespace cli
