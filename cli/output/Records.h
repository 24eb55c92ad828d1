#ifndef LUMO_CLI_OUTPUT_RECORDS_H
#define LUMO_CLI_OUTPUT_RECORDS_H

#include "cli/Catalogue.h"
#include "cli/output/Output.h"

namespace cli {

// How values of records are shown to people, and in JSON, where the keys are the names of the fields.

/// A name for people, not yet escaped; a note for a name that was too long for its record.
std::string shownName(const Text& name);
/// Any other text for people; "-" when there is none.
std::string shownText(const Text& text);

/// The fields of a listing.
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

/// Prints folders and files as one list.
void printListing(const std::vector<Folder>& folders, const std::vector<File>& files, bool json);

/// Prints the identifier of what a command made or found.
void printIdentifier(unsigned int id, bool json);

} // namespace cli

#endif
