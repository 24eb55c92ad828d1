#include "cli/Commands.h"

#include "cli/ExitCode.h"
#include "cli/ImageCatalogue.h"

#include "lumo/core/LumoDataMgr.h"

namespace cli {

namespace {

void showList(const RecordOptions& options, const RecordList& list, const char* whenEmpty)
{
    RecordLists lists;
    lists.lists = {list};
    lists.whenEmpty = whenEmpty;
    limit(lists, options.limit);
    printRecords(lists, options.form);
}

} // namespace

Action listProjects(const RecordOptions& options)
{
    return [options](Session& session) {
        QList<tagDataTable> projects;
        answered(session, session.manager.getData(projects));
        showList(options, listOf(projects), "(the company has no projects)");
    };
}

Action listTypes(const std::string& project, const RecordOptions& options)
{
    return [project, options](Session& session) {
        const unsigned int id = findProject(session, project).projectID;
        showList(options, kindNamed("type").listIn(session, id), "(the project has no types)");
    };
}

Action listImages(const std::string& type, const RecordOptions& options)
{
    return [type, wanted = parseType(type), options](Session& session) {
        const tagTypeTable found = findType(session, wanted);
        const Text name = textOf(recordText(found.dataType));
        const Kind* const kind = kindOfType(name);
        if (kind == nullptr)
            refuse("type '" + type + "' is named '" + name.value_or("") +
                   "', which tells no kind of records; those that do are " + decidingTypeNames());
        showList(options, kind->listIn(session, found.typeID), "(the type has no records)");
    };
}

Action listImagesOfProject(const std::string& project, const std::string& kindWord, const std::string& mark,
                           const RecordOptions& options)
{
    const Kind& kind = kindNamed(kindWord);
    const bool known = mark.empty() ? kind.listInProject != nullptr : kind.listMarked != nullptr;
    if (!known) {
        refuse("there is no list of the " + kindWord + " records of a project" +
               (mark.empty() ? "" : " that bear a mark"));
    }
    const unsigned int markID = mark.empty() ? kNone : parseIdentifier(mark, "mark");
    return [&kind, project, markID, options](Session& session) {
        const unsigned int id = findProject(session, project).projectID;
        showList(options,
                 markID == kNone ? kind.listInProject(session, id) : kind.listMarked(session, id, markID),
                 markID == kNone ? "(the project has no such records)" : "(no such records bear the mark)");
    };
}

Action listPoints(const std::string& control, const RecordOptions& options)
{
    const unsigned int id = parseIdentifier(control, "control file");
    return [id, file = kindNamed("control").find(control), options](Session& session) {
        file(session);
        showList(options, kindNamed("point").listIn(session, id), "(the control file has no points)");
    };
}

Action showRecordOfKind(const std::string& kind, const std::string& id, const RecordOptions& options)
{
    return [find = kindNamed(kind).find(id), options](Session& session) {
        printRecord(find(session), options.form);
    };
}

} // namespace cli
