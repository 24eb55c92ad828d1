#ifndef LUMO_CLI_OUTPUT_RECORDOUTPUT_H
#define LUMO_CLI_OUTPUT_RECORDOUTPUT_H

#include "cli/output/RecordFields.h"

#include <QList>

#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace cli {

enum class Form
{
    AsTable,
    AsJson,
    AsCsv
};

/// Records of one kind, whatever the kind.
struct RecordList
{
    std::vector<std::string> names; ///< of the fields, of an empty list too
    std::size_t size = 0;
    std::function<Fields(std::size_t)> at;

    /// What the records have in common, by the keys of RecordLists::commonNames.
    std::vector<std::string> common;
    std::string heading; ///< of a table; none when empty
};

std::vector<std::string> namesOf(const Fields& fields);

template <class Record>
RecordList listOf(const QList<Record>& records)
{
    RecordList list;
    list.names = namesOf(fieldsOf(records.isEmpty() ? Record{} : records.front()));
    list.size = static_cast<std::size_t>(records.size());
    list.at = [records](std::size_t index) { return fieldsOf(records[static_cast<int>(index)]); };
    return list;
}

/// What a command shows.
struct RecordLists
{
    std::vector<std::string> commonNames;
    std::vector<RecordList> lists;
    bool cut = false; ///< there are more records
    const char* whenEmpty = "";
};

/// Cuts the lists to so many records in total.
void limit(RecordLists& lists, std::size_t records);

/// Prints records as they were asked for: a table for each list, one JSON array, or one CSV document. A table
/// has the leading columns, then those in which there is something to show, in their order, as long as they
/// fit into `width`; where the leading ones alone do not, names are shortened when `clipNames`.
void printRecords(const RecordLists& lists, Form form, std::size_t width, bool clipNames);
/// The same for the terminal in use.
void printRecords(const RecordLists& lists, Form form);

/// Prints all fields of the list's one record.
void printRecord(const RecordList& list, Form form);

/// A cell of CSV, quoted where RFC 4180 asks for it.
std::string csvCell(const std::string& text);

} // namespace cli

#endif
