#ifndef LUMO_CLI_OUTPUT_RECORDS_H
#define LUMO_CLI_OUTPUT_RECORDS_H

#include "cli/output/Output.h"

#include "lumo/client/Entry.h"

#include <string>
#include <utility>
#include <vector>

namespace cli {

// How entries of the storage catalogue are shown to people, and in JSON, where the keys are the names of the
// fields of the library's records.

/// A name for people, not yet escaped; a note for a name that was too long for its record.
std::string shownName(const lumo::Entry::Text& name);
/// Any other text for people; "-" when there is none.
std::string shownText(const lumo::Entry::Text& text);

/// An identifier with its kind, which can be typed as a place: "folder:12"; "-" for none.
std::string identifierText(const char* kind, unsigned int id);
std::string identifierText(const lumo::Entry& entry);

/// The fields of a listing.
Json listedJson(const lumo::Entry& entry);
Json listedJson(const std::vector<lumo::Entry>& entries);
/// All fields.
Json wholeJson(const lumo::Entry& entry);

Json textJson(const lumo::Entry::Text& text);

/// A field of what is shown: its key in JSON, and its heading for people.
struct NamedField
{
    const char* key;
    const char* heading;
};

/// Prints the fields of one thing, in their order.
void printFields(const std::vector<std::pair<NamedField, Json>>& fields, bool json);
/// Prints things with the same fields as a list.
void printList(const std::vector<NamedField>& fields, const std::vector<std::vector<Json>>& rows,
               const std::string& whenEmpty, bool json);

/// Prints folders and files as one list.
void printListing(const std::vector<lumo::Entry>& folders, const std::vector<lumo::Entry>& files, bool json);

/// Prints the identifier of what a command made or found.
void printIdentifier(unsigned int id, bool json);

} // namespace cli

#endif
