#ifndef LUMO_CLI_RECORDS_H
#define LUMO_CLI_RECORDS_H

#include "cli/Catalogue.h"
#include "cli/Output.h"

namespace cli {

/// How the values of records are shown: to people and in JSON, where the keys are the records' field names.

/// A name for people, not yet escaped; one that the record could not hold says so.
std::string shownName(const Text& name);
/// Any other text for people; "-" when there is none.
std::string shownText(const Text& text);

/// The fields that a listing tells.
Json listedJson(const Disk& disk);
Json listedJson(const Folder& folder);
Json listedJson(const File& file);

/// All fields.
Json wholeJson(const Disk& disk);
Json wholeJson(const Folder& folder);
Json wholeJson(const File& file);

template <class Record>
Json listedJson(const std::vector<Record>& records)
{
    Json list = Json::array();
    for (const Record& record : records)
        list.push_back(listedJson(record));
    return list;
}

Json textJson(const Text& text);

} // namespace cli

#endif
