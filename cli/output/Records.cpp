#include "cli/output/Records.h"

#include "cli/output/DisplayText.h"

#include <algorithm>
#include <iterator>

namespace cli {

namespace {

using Kind = lumo::Entry::Kind;

Json identifierJson(unsigned int id)
{
    return id == kNoIdentifier ? Json(nullptr) : Json(id);
}

/// A field for people.
std::string shownValue(const Json& value)
{
    return value.is_string() ? shownText(value.get<std::string>()) : value.dump();
}

} // namespace

std::string shownName(const lumo::Entry::Text& name)
{
    return name.value_or("(name too long for its record)");
}

std::string shownText(const lumo::Entry::Text& text)
{
    if (!text)
        return "(too long for its record)";
    return text->empty() ? "-" : *text;
}

std::string identifierText(const char* kind, unsigned int id)
{
    return id == kNoIdentifier ? std::string("-") : std::string(kind) + ":" + std::to_string(id);
}

std::string identifierText(const lumo::Entry& entry)
{
    switch (entry.kind) {
    case Kind::Disk:
        return identifierText("disk", entry.disk.number());
    case Kind::Folder:
        return identifierText("folder", entry.folder.number());
    default:
        return identifierText("file", entry.file.number());
    }
}

Json textJson(const lumo::Entry::Text& text)
{
    return text ? Json(*text) : Json(nullptr);
}

Json listedJson(const lumo::Entry& entry)
{
    switch (entry.kind) {
    case Kind::Disk:
        return {{"diskID", identifierJson(entry.disk.number())},
                {"refID", identifierJson(entry.reference)},
                {"kestaCode", textJson(entry.box)},
                {"diskName", textJson(entry.name)},
                {"rootPath", textJson(entry.root)}};
    case Kind::Folder:
        return {{"folderID", identifierJson(entry.folder.number())},
                {"diskID", identifierJson(entry.disk.number())},
                {"parentID", identifierJson(entry.parent.number())},
                {"folderName", textJson(entry.name)}};
    default:
        return {{"fileID", identifierJson(entry.file.number())},
                {"parentID", identifierJson(entry.parent.number())},
                {"fileName", textJson(entry.name)}};
    }
}

Json listedJson(const std::vector<lumo::Entry>& entries)
{
    Json list = Json::array();
    for (const lumo::Entry& entry : entries)
        list.push_back(listedJson(entry));
    return list;
}

Json wholeJson(const lumo::Entry& entry)
{
    Json json = listedJson(entry);
    if (entry.kind != Kind::Disk) {
        json["shortText"] = textJson(entry.shortText);
        json["longText"] = textJson(entry.longText);
    }
    return json;
}

void printFields(const std::vector<std::pair<NamedField, Json>>& fields, bool json)
{
    Json record = Json::object();
    Table table({"", ""});
    for (const auto& [field, value] : fields) {
        record[field.key] = value;
        table.add({field.heading, shownValue(value)});
    }
    print(json ? jsonText(record) : table.text());
}

void printList(const std::vector<NamedField>& fields, const std::vector<std::vector<Json>>& rows,
               const std::string& whenEmpty, bool json)
{
    Json list = Json::array();
    std::vector<std::string> headings;
    std::transform(fields.begin(), fields.end(), std::back_inserter(headings),
                   [](const NamedField& field) { return field.heading; });
    Table table(headings);
    for (const std::vector<Json>& row : rows) {
        Json& record = list.emplace_back(Json::object());
        std::vector<std::string> cells;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            record[fields[i].key] = row[i];
            cells.push_back(shownValue(row[i]));
        }
        table.add(std::move(cells));
    }
    print(json ? jsonText(list) : rows.empty() ? whenEmpty + "\n" : table.text(listWidth()));
}

void printListing(const std::vector<lumo::Entry>& folders, const std::vector<lumo::Entry>& files, bool json)
{
    if (json) {
        print(jsonText({{"folders", listedJson(folders)}, {"files", listedJson(files)}}));
        return;
    }
    Table table({"IDENTIFIER", "NAME"});
    for (const auto* const entries : {&folders, &files})
        for (const lumo::Entry& entry : *entries)
            table.add({identifierText(entry), shownName(entry.name)});
    print(folders.empty() && files.empty() ? "(no folders or files)\n" : table.text(listWidth()));
}

void printIdentifier(unsigned int id, bool json)
{
    print(json ? jsonText({{"id", id}}) : std::to_string(id) + "\n");
}

} // namespace cli
