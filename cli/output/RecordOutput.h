#ifndef LUMO_CLI_OUTPUT_RECORDOUTPUT_H
#define LUMO_CLI_OUTPUT_RECORDOUTPUT_H

#include "cli/output/Output.h"

#include "lumo/client/Record.h"

#include <cstddef>
#include <string>
#include <vector>

namespace cli {

enum class Form
{
    AsTable,
    AsJson,
    AsCsv
};

/// Records of one kind.
struct RecordList
{
    std::vector<const char*> names; ///< of the fields, of an empty list too
    std::vector<lumo::Record> records;

    /// What the records have in common, by the keys of RecordLists::commonNames.
    std::vector<std::string> common;
    std::string heading; ///< of a table; none when empty
};

RecordList listOf(lumo::Record::Kind kind, std::vector<lumo::Record> records);

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
/// has the leading columns, then as many of the columns that are not empty as fit into `width`, in their
/// order. Where even the leading columns do not fit, names are shortened if `clipNames` is set.
void printRecords(const RecordLists& lists, Form form, std::size_t width, bool clipNames);
/// The same for the terminal in use.
void printRecords(const RecordLists& lists, Form form);

/// Prints all fields of one record.
void printRecord(const lumo::Record& record, Form form);

/// A value for people, not yet escaped: codes with their meaning, "-" for what is absent or empty.
std::string shown(const lumo::Record::Value& value);
/// Null for what is absent or too long for its record.
Json jsonOf(const lumo::Record::Value& value);
/// For CSV, not yet quoted; what is null in JSON is empty.
std::string plain(const lumo::Record::Value& value);

} // namespace cli

#endif
