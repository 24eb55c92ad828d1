#ifndef LUMO_CLI_IMAGECATALOGUE_H
#define LUMO_CLI_IMAGECATALOGUE_H

#include "cli/Session.h"
#include "cli/output/RecordOutput.h"

#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace cli {

/// The image catalogue as the commands see it: what the user names is found, and every failure of a call is
/// thrown as Failure with the reason.

/// A record that the user has named; throws Failure (PlaceNotFound).
using FindRecord = std::function<RecordList(Session&)>;

/// A record in which a text that does not fit leaves its mark, see RecordText.
template <class Record>
Record markedRecord()
{
    Record record;
    std::memset(&record, 1, sizeof record);
    return record;
}

template <class Record>
RecordList listOfOne(const Record& record)
{
    return listOf(QList<Record>{record});
}

/// A kind of record.
struct Kind
{
    const char* word; ///< its name on the command line
    ENUM_DATA_TYPE number;
    const char* typeName; ///< of the types whose records are of this kind; null for the other kinds
    /// From what the user typed; throws Failure (WrongUse) for what can't name a record of this kind.
    std::function<FindRecord(const std::string&)> find;
    /// The records of a type, a project or a control file; none for projects.
    std::function<RecordList(Session&, unsigned int)> listIn;
    /// All records of this kind in a project; none where the library has no such list.
    std::function<RecordList(Session&, unsigned int)> listInProject;
    /// Those of them that bear a mark, by the project and the mark; none as above.
    std::function<RecordList(Session&, unsigned int, unsigned int)> listMarked;
};

bool isKind(const std::string& word);
/// The kinds for messages; with `marked` those whose records bear marks.
std::string kindWords(bool marked = false);
/// Throws Failure (WrongUse) for an unknown word.
const Kind& kindNamed(const std::string& word);
/// The kind of the records of a type; null when its name decides none.
const Kind* kindOfType(const Text& typeName);
/// The type names that decide a kind, for messages.
std::string decidingTypeNames();

/// Whether there is an answer; throws Failure (CentreFailed) for a failed call.
bool answered(const Session& session, ENUM_RET_TYPE result);

/// An identifier that the user typed; throws Failure (WrongUse) for anything else. `what` names it in the
/// message.
unsigned int parseIdentifier(const std::string& text, const std::string& what);

/// The project of that identifier or, where there is none, of that name; throws Failure (PlaceNotFound).
tagDataTable findProject(Session& session, const std::string& project);

/// None where the catalogue has no such project.
std::optional<tagDataTable> projectOf(const Session& session, unsigned int projectID);

/// A type by its identifier, or by its project and its name.
struct TypeName
{
    unsigned int id = kNone;
    std::string project;
    std::string name;
};

/// "12" or "PROJECT/TYPENAME"; throws Failure (WrongUse).
TypeName parseType(const std::string& text);
/// Throws Failure (PlaceNotFound).
tagTypeTable findType(Session& session, const TypeName& type);

} // namespace cli

#endif
