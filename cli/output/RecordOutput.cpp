#include "cli/output/RecordOutput.h"

#include "cli/output/DisplayText.h"

#include <algorithm>

#include <unistd.h>

namespace cli {

namespace {

constexpr std::size_t kWidestText = 24; ///< of a table's cell, but for names
constexpr std::size_t kGap = 2;         ///< between two columns

std::string cellOf(const Field& field)
{
    const std::string text = escaped(shown(field.value));
    return field.role == Field::Role::Leading ? text : clipped(text, kWidestText);
}

/// What there is to show in a column.
struct Column
{
    std::size_t width = 0; ///< 0: nothing
    bool leads = false;
};

std::vector<Column> columnsOf(const RecordList& list, std::size_t width)
{
    std::vector<Column> columns(list.names.size());
    for (std::size_t index = 0; index < list.size; ++index) {
        const Fields fields = list.at(index);
        std::size_t used = 0;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            Column& column = columns[i];
            const std::string cell = cellOf(fields[i]);
            column.leads = fields[i].role == Field::Role::Leading;
            if (column.leads || (cell != "-" && fields[i].role != Field::Role::Detail))
                column.width = std::max({column.width, displayWidth(cell), list.names[i].size()});
            used += column.width == 0 ? 0 : column.width + kGap;
            // Widths only grow: what doesn't fit now will not, and nothing behind it.
            if (!column.leads && used > width + kGap)
                columns.resize(i);
        }
    }
    return columns;
}

/// The width that is left for the name, the last of the leading columns.
std::size_t nameWidth(const std::vector<Column>& columns, std::size_t width)
{
    std::size_t keys = 0;
    std::size_t last = 0;
    for (const Column& column : columns) {
        keys += column.leads ? last : 0;
        last = column.leads ? column.width + kGap : last;
    }
    return width > keys ? width - keys : 1;
}

void printTable(const RecordList& list, std::size_t width, bool clipNames)
{
    const std::vector<Column> columns = columnsOf(list, width);
    const std::size_t widestName = nameWidth(columns, width);
    std::vector<std::size_t> shownColumns;
    std::vector<std::string> headings;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].width > 0) {
            shownColumns.push_back(i);
            headings.push_back(list.names[i]);
        }
    }
    Table table(headings);
    for (std::size_t index = 0; index < list.size; ++index) {
        const Fields fields = list.at(index);
        std::vector<std::string> cells;
        for (const std::size_t column : shownColumns) {
            const std::string cell = cellOf(fields[column]);
            cells.push_back(clipNames && columns[column].leads ? clipped(cell, widestName) : cell);
        }
        table.add(std::move(cells));
    }
    print(table.text());
}

Json recordJson(const RecordLists& lists, const RecordList& list, std::size_t index)
{
    Json record = Json::object();
    // Looking each key up for a record of sixty would cost more than all else.
    std::vector<std::pair<const std::string, Json>>& members = record.get_ref<Json::object_t&>();
    members.reserve(lists.commonNames.size() + list.names.size());
    for (std::size_t i = 0; i < lists.commonNames.size(); ++i)
        members.emplace_back(lists.commonNames[i], list.common[i]);
    for (const Field& field : list.at(index))
        members.emplace_back(field.name, jsonOf(field.value));
    return record;
}

/// One array; each record is a line of it.
void printJson(const RecordLists& lists)
{
    const char* separator = "[\n";
    for (const RecordList& list : lists.lists) {
        for (std::size_t index = 0; index < list.size; ++index) {
            std::string line = jsonLine(recordJson(lists, list, index));
            line.pop_back();
            print(separator + line);
            separator = ",\n";
        }
    }
    print(*separator == '[' ? "[]\n" : "\n]\n");
}

void printLine(const std::vector<std::string>& cells)
{
    std::string line;
    for (const std::string& cell : cells)
        line += csvCell(cell) + ",";
    line.pop_back();
    print(line + "\r\n");
}

/// One header for all lists: a record leaves the fields of other kinds empty.
void printCsv(const RecordLists& lists)
{
    std::vector<std::string> header = lists.commonNames;
    std::vector<std::vector<std::size_t>> places; // of each list's fields in the header
    for (const RecordList& list : lists.lists) {
        places.emplace_back();
        for (const std::string& name : list.names) {
            const auto known = std::find(header.begin(), header.end(), name);
            places.back().push_back(static_cast<std::size_t>(known - header.begin()));
            if (known == header.end())
                header.push_back(name);
        }
    }
    printLine(header);
    for (std::size_t number = 0; number < lists.lists.size(); ++number) {
        const RecordList& list = lists.lists[number];
        for (std::size_t index = 0; index < list.size; ++index) {
            std::vector<std::string> cells = list.common;
            cells.resize(header.size());
            const Fields fields = list.at(index);
            for (std::size_t i = 0; i < fields.size(); ++i)
                cells[places[number][i]] = plain(fields[i].value);
            printLine(cells);
        }
    }
}

void printTables(const RecordLists& lists, std::size_t width, bool clipNames)
{
    std::size_t records = 0;
    for (const RecordList& list : lists.lists) {
        if (list.size == 0)
            continue;
        if (!list.heading.empty())
            print((records == 0 ? "" : "\n") + escaped(list.heading) + "\n");
        printTable(list, width, clipNames);
        records += list.size;
    }
    if (records == 0)
        print(std::string(lists.whenEmpty) + "\n");
    if (lists.cut)
        print("(the first " + std::to_string(records) + ", as --limit says; there are more)\n");
}

} // namespace

std::vector<std::string> namesOf(const Fields& fields)
{
    std::vector<std::string> names;
    names.reserve(fields.size());
    for (const Field& field : fields)
        names.emplace_back(field.name);
    return names;
}

void limit(RecordLists& lists, std::size_t records)
{
    for (RecordList& list : lists.lists) {
        const std::size_t kept = std::min(list.size, records);
        lists.cut = lists.cut || kept < list.size;
        list.size = kept;
        records -= kept;
    }
}

void printRecords(const RecordLists& lists, Form form, std::size_t width, bool clipNames)
{
    switch (form) {
    case Form::AsJson:
        return printJson(lists);
    case Form::AsCsv:
        return printCsv(lists);
    case Form::AsTable:
        return printTables(lists, width, clipNames);
    }
}

void printRecords(const RecordLists& lists, Form form)
{
    // Where the output goes on to another program, a name must be found whole.
    printRecords(lists, form, terminalWidth(), isatty(STDOUT_FILENO) != 0);
}

void printRecord(const RecordList& list, Form form)
{
    RecordLists lists;
    lists.lists = {list};
    if (form == Form::AsCsv)
        return printCsv(lists);
    if (form == Form::AsJson)
        return print(jsonText(recordJson(lists, list, 0)));
    Table table({"", ""});
    for (const Field& field : list.at(0))
        table.add({field.name, shown(field.value)});
    print(table.text());
}

std::string csvCell(const std::string& text)
{
    if (text.find_first_of("\",\r\n") == std::string::npos)
        return text;
    std::string cell = "\"";
    for (const char byte : text)
        cell.append(byte == '"' ? 2 : 1, byte);
    return cell + "\"";
}

} // namespace cli
