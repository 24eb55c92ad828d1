#include "cli/Commands.h"

#include "cli/ExitCode.h"
#include "cli/LocalFiles.h"
#include "cli/Transfer.h"

#include "lumo/core/LumoDataMgr.h"

#include <set>

namespace cli {

namespace {

Transfer transferOf(Session& session, const LocalSource& source, const std::string& place, const Found& found,
                    bool overwrite)
{
    Transfer transfer;
    transfer.source = below(".", source.path);
    transfer.target = place + (place.back() == '/' ? "" : "/") + source.name;
    transfer.get = false;
    transfer.tellsProgress = true;
    transfer.overwrite = overwrite;
    transfer.bytes = source.bytes;
    transfer.movesFile = !source.folder;
    transfer.start = [&session, source, found, overwrite](const TransferCallback& callback) {
        return session.manager.upload(QString::fromStdString(source.path), placeOf(found), kNone, overwrite,
                                      callback);
    };
    transfer.refusal = [&session, found] { return refusalText(session, found); };
    return transfer;
}

void runPut(Session& session, const std::vector<LocalSource>& sources, const std::string& placeText,
            bool overwrite)
{
    Place place = parsePlace(placeText);
    place.folderOnly = true;
    const Found found = session.catalogue.find(place);
    if (found.kind == Place::Kind::File)
        throw Failure(ExitCode::PlaceNotFound, "'" + placeText + "' is a file, not a folder");
    std::vector<Transfer> transfers;
    transfers.reserve(sources.size());
    for (const LocalSource& source : sources)
        transfers.push_back(transferOf(session, source, placeText, found, overwrite));
    runTransfers(std::move(transfers), session);
}

} // namespace

Action putPaths(std::vector<std::string> paths, bool overwrite)
{
    if (paths.size() < 2)
        refuse("put takes what to send and where to: lumo put PATH... PLACE");
    const std::string placeText = paths.back();
    paths.pop_back();
    const Place place = parsePlace(placeText);
    if (place.kind == Place::Kind::Path && place.components.empty())
        refuse("files can't be put beside the disks: name one, as in /disk");
    std::vector<LocalSource> sources;
    std::set<std::string> names;
    for (const std::string& path : paths) {
        sources.push_back(localSource(path));
        if (!names.insert(sources.back().name).second) {
            refuse("two of the paths are named '" + sources.back().name +
                   "': put them one by one, into two folders");
        }
    }
    return
        [sources, placeText, overwrite](Session& session) { runPut(session, sources, placeText, overwrite); };
}

} // namespace cli
