#include "cli/Commands.h"

#include "cli/Connection.h"
#include "cli/ExitCode.h"
#include "cli/ImageCatalogue.h"

#include "lumo/core/LumoDataMgr.h"

namespace cli {

namespace {

/// A place that can be linked: not all disks at once.
Place parseLinked(const std::string& text)
{
    Place place = parsePlace(text);
    if (place.kind == Place::Kind::Path && place.components.empty())
        refuse("'/' stands for all disks and belongs to no project: name a disk, a folder or a file");
    return place;
}

unsigned int madeFolder(Session& session, const FoundPart& missing)
{
    const auto disk = session.catalogue.diskOf(missing.found);
    const unsigned int parent = session.catalogue.folderOf(missing.found);
    if (!disk)
        throw Failure(ExitCode::PlaceNotFound, "the folder's disk is not there");
    session.journal.forget();
    const unsigned int id =
        session.manager.createFolder(disk->diskID, parent, QString::fromStdString(missing.names));
    if (id == kNone || id == 0)
        requestFailed(session.journal);
    return id;
}

} // namespace

Action linkPlace(const std::string& project, const std::string& placeText, bool link)
{
    return [project, placeText, place = parseLinked(placeText), link](Session& session) {
        CLumoDataMgr& manager = session.manager;
        const unsigned int projectID = findProject(session, project).projectID;
        const Found found = session.catalogue.find(place);
        const bool file = found.kind == Place::Kind::File;
        const unsigned int id = file ? found.file.fileID : session.catalogue.folderOf(found);
        session.journal.forget();
        const bool done =
            file   ? (link ? manager.linkDataFile(projectID, id) : manager.unlinkDataFile(projectID, id))
            : link ? manager.linkDataFolder(projectID, id)
                   : manager.unlinkDataFolder(projectID, id);
        // The library tells an error of the centre and a link that is not there alike.
        if (!done && !link && session.journal.lastReason().kind == Reason::Kind::ErrorResult)
            throw Failure(ExitCode::PlaceNotFound,
                          "'" + placeText + "' is not linked to project '" + project + "'");
        if (!done)
            requestFailed(session.journal);
    };
}

Action showProjectOf(const std::string& placeText, const RecordOptions& options)
{
    return [placeText, place = parseLinked(placeText), options](Session& session) {
        const Found found = session.catalogue.find(place);
        auto record = markedRecord<tagDataTable>();
        session.journal.forget();
        const bool linked = found.kind == Place::Kind::File
                                ? session.manager.getDataByFile(found.file.fileID, record)
                                : session.manager.getDataByFolder(session.catalogue.folderOf(found), record);
        // The library tells an error of the centre and a place without a project alike.
        if (!linked && session.journal.lastReason().kind == Reason::Kind::ErrorResult)
            throw Failure(ExitCode::PlaceNotFound, "'" + placeText + "' is linked to no project");
        if (!linked)
            requestFailed(session.journal);
        printRecord(listOfOne(record), options.form);
    };
}

Action makeFolder(const std::string& placeText, bool parents)
{
    const Place place = parsePlace(placeText);
    if (place.kind != Place::Kind::Path || place.components.size() < 2)
        refuse("'" + placeText + "' names no new folder: write its path, as in /disk/folder");
    return [placeText, place, parents](Session& session) {
        const FoundPart missing = session.catalogue.findWithMissing(place);
        if (missing.names.empty() && (!parents || missing.found.kind == Place::Kind::File))
            refuse("'" + placeText + "' is there already");
        if (missing.found.kind == Place::Kind::File)
            throw Failure(ExitCode::PlaceNotFound, "a file stands in the way of '" + placeText + "'");
        if (missing.names.find('/') != std::string::npos && !parents)
            throw Failure(ExitCode::PlaceNotFound,
                          "the folder of '" + placeText + "' is not there; --parents makes it, too");
        const unsigned int id =
            missing.names.empty() ? missing.found.folder.folderID : madeFolder(session, missing);
        print(session.json ? jsonText({{"folderID", id}}) : identifierText("folder", id) + "\n");
    };
}

} // namespace cli
