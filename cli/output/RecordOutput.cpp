#include "cli/output/RecordOutput.h"

#include "cli/output/Csv.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Records.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <variant>

#include <unistd.h>

namespace cli {

namespace {

constexpr std::size_t kWidestText = 24; ///< of a table's cell, but for names

using lumo::Record;
using Role = Record::Field::Role;

template <class... Functions>
struct Overloaded : Functions...
{
    using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

template <class Number>
std::string digits(Number number)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

std::string cellOf(const Record::Field& field)
{
    const std::string text = escaped(shown(field.value));
    return field.role == Role::Leading ? text : clipped(text, kWidestText);
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
    for (const Record& record : list.records) {
        const auto& fields = record.fields();
        std::size_t used = 0;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            Column& column = columns[i];
            const std::string cell = cellOf(fields[i]);
            column.leads = fields[i].role == Role::Leading;
            if (column.leads || (cell != "-" && fields[i].role != Role::Detail))
                column.width = std::max({column.width, displayWidth(cell), std::strlen(list.names[i])});
            used += column.width == 0 ? 0 : column.width + kGap;
            // Widths only grow, so this column and those after it never fit again.
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
            headings.emplace_back(list.names[i]);
        }
    }
    Table table(headings);
    for (const Record& record : list.records) {
        const auto& fields = record.fields();
        std::vector<std::string> cells;
        for (const std::size_t column : shownColumns) {
            const std::string cell = cellOf(fields[column]);
            cells.push_back(clipNames && columns[column].leads ? clipped(cell, widestName) : cell);
        }
        table.add(std::move(cells));
    }
    print(table.text());
}

Json recordJson(const std::vector<std::string>& commonNames, const std::vector<std::string>& common,
                const Record& record)
{
    Json json = Json::object();
    // Looking each key up for a record of sixty would cost more than all else.
    std::vector<std::pair<const std::string, Json>>& members = json.get_ref<Json::object_t&>();
    members.reserve(commonNames.size() + record.fields().size());
    for (std::size_t i = 0; i < commonNames.size(); ++i)
        members.emplace_back(commonNames[i], common[i]);
    for (const Record::Field& field : record.fields())
        members.emplace_back(field.name, jsonOf(field.value));
    return json;
}

/// One array; each record is a line of it.
void printJson(const RecordLists& lists)
{
    const char* separator = "[\n";
    for (const RecordList& list : lists.lists) {
        for (const Record& record : list.records) {
            std::string line = jsonLine(recordJson(lists.commonNames, list.common, record));
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
        for (const char* const name : list.names) {
            const auto known = std::find(header.begin(), header.end(), name);
            places.back().push_back(static_cast<std::size_t>(known - header.begin()));
            if (known == header.end())
                header.emplace_back(name);
        }
    }
    printLine(header);
    for (std::size_t number = 0; number < lists.lists.size(); ++number) {
        const RecordList& list = lists.lists[number];
        for (const Record& record : list.records) {
            std::vector<std::string> cells = list.common;
            cells.resize(header.size());
            const auto& fields = record.fields();
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
        if (list.records.empty())
            continue;
        if (!list.heading.empty())
            print((records == 0 ? "" : "\n") + escaped(list.heading) + "\n");
        printTable(list, width, clipNames);
        records += list.records.size();
    }
    if (records == 0)
        print(std::string(lists.whenEmpty) + "\n");
    if (lists.cut)
        print("(the first " + std::to_string(records) + ", as --limit says; there are more)\n");
}

} // namespace

RecordList listOf(Record::Kind kind, std::vector<Record> records)
{
    return {Record::fieldNames(kind), std::move(records), {}, {}};
}

void limit(RecordLists& lists, std::size_t records)
{
    for (RecordList& list : lists.lists) {
        const std::size_t kept = std::min(list.records.size(), records);
        lists.cut = lists.cut || kept < list.records.size();
        list.records.erase(list.records.begin() + static_cast<std::ptrdiff_t>(kept), list.records.end());
        records -= kept;
    }
}

void printRecords(const RecordLists& lists, Form form, std::size_t width, bool clipNames)
{
    if (form == Form::AsJson)
        printJson(lists);
    else if (form == Form::AsCsv)
        printCsv(lists);
    else
        printTables(lists, width, clipNames);
}

void printRecords(const RecordLists& lists, Form form)
{
    // Another program that reads the output must find names whole.
    printRecords(lists, form, terminalWidth(), isatty(STDOUT_FILENO) != 0);
}

void printRecord(const Record& record, Form form)
{
    if (form == Form::AsJson)
        return print(jsonText(recordJson({}, {}, record)));
    if (form == Form::AsCsv) {
        RecordLists lists;
        lists.lists = {listOf(record.kind(), {record})};
        return printCsv(lists);
    }
    Table table({"", ""});
    for (const Record::Field& field : record.fields())
        table.add({field.name, shown(field.value)});
    print(table.text());
}

std::string shown(const Record::Value& value)
{
    if (const auto* const code = std::get_if<Record::Code>(&value))
        return digits(code->number) + " (" + code->meaning + ")";
    return shownText(std::holds_alternative<Record::TooLong>(value) ? lumo::Entry::Text() : plain(value));
}

Json jsonOf(const Record::Value& value)
{
    return std::visit(Overloaded{[](Record::Absent) { return Json(nullptr); },
                                 [](Record::TooLong) { return Json(nullptr); },
                                 [](const Record::Code& code) { return Json(code.number); },
                                 [](const auto& plainValue) { return Json(plainValue); }},
                      value);
}

std::string plain(const Record::Value& value)
{
    return std::visit(Overloaded{[](Record::Absent) { return std::string(); },
                                 [](Record::TooLong) { return std::string(); },
                                 [](const std::string& text) { return text; },
                                 [](const Record::Code& code) { return digits(code.number); },
                                 [](auto number) { return digits(number); }},
                      value);
}

} // namespace cli
