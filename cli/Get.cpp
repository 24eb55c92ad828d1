#include "cli/Commands.h"

#include "cli/ExitCode.h"
#include "cli/LocalFiles.h"
#include "cli/Transfer.h"

#include "lumo/core/LumoDataMgr.h"

#include <set>

namespace cli {

namespace {

bool canBePlace(const std::string& text)
{
    try {
        parsePlace(text);
        return true;
    } catch (const Failure&) {
        return false;
    }
}

/// Takes the last of several arguments as the local folder, unless it looks like one more place.
std::string takeFolder(std::vector<std::string>& arguments)
{
    if (arguments.size() < 2)
        return ".";
    std::string folder = arguments.back();
    if (!isFolder(folder) && canBePlace(folder)) {
        refuse(
            "there is no local folder '" + folder +
            "': the last of several arguments is where to put the others; --to DIR names and makes it, too");
    }
    arguments.pop_back();
    return folder;
}

struct Source
{
    std::string text; ///< as typed
    Found found;
    std::string name; ///< empty when nobody tells it
};

/// What the library tells derived classes alone.
struct FullPath : CLumoDataMgr
{
    /// Of a folder or a file on its storage box.
    static QString of(CLumoDataMgr& manager, const Found& found)
    {
        QString box;
        const auto path =
            found.kind == Place::Kind::File ? &FullPath::getFileFullPath : &FullPath::getFolderFullPath;
        return (manager.*path)(placeOf(found).second, box);
    }
};

/// The name that it comes under, which may be too long for its record.
std::string fullName(Session& session, const Place& place, const Found& found)
{
    if (const Text& name = nameOf(found))
        return *name;
    if (!place.components.empty())
        return place.components.back();
    const QString path = found.kind == Place::Kind::Disk ? QString() : FullPath::of(session.manager, found);
    return path.section('/', -1).toStdString();
}

Source sourceOf(Session& session, const std::string& text)
{
    const Place place = parsePlace(text);
    const Found found = session.catalogue.find(place);
    return {text, found, fullName(session, place, found)};
}

/// A get writes to one file or folder, which no other may write to, and which can't be of the other kind.
void checkTarget(const Source& source, const std::string& folder, std::set<std::string>& targets)
{
    if (source.name.empty())
        return;
    const std::string target = below(folder, source.name);
    if (!targets.insert(target).second)
        refuse("two of the places would become '" + target + "': get them one by one, into two folders");
    const bool file = source.found.kind == Place::Kind::File;
    if (file ? isFolder(target) : isFileOrLink(target)) {
        refuse("'" + source.text + "' is a " + (file ? "file" : "folder") + ", but '" + target + "' is a " +
               (file ? "folder" : "file") + " already");
    }
}

Transfer transferOf(Session& session, const Source& source, const std::string& folder, bool overwrite)
{
    Transfer transfer;
    transfer.source = source.text;
    transfer.target = below(folder, source.name);
    transfer.folder = folder;
    transfer.overwrite = overwrite;
    transfer.start = [&session, source, folder, overwrite](const TransferCallback& callback) {
        return session.manager.download(QString::fromStdString(folder), placeOf(source.found), overwrite,
                                        callback);
    };
    transfer.refusal = [&session, source] { return refusalText(session, source.found); };
    return transfer;
}

void runGet(Session& session, const std::vector<std::string>& places, const std::string& folder,
            bool overwrite)
{
    std::vector<Source> sources;
    std::set<std::string> targets;
    for (const std::string& text : places) {
        sources.push_back(sourceOf(session, text));
        checkTarget(sources.back(), folder, targets);
    }
    makeFolder(folder);
    std::vector<Transfer> transfers;
    transfers.reserve(sources.size());
    for (const Source& source : sources)
        transfers.push_back(transferOf(session, source, folder, overwrite));
    runTransfers(std::move(transfers), session);
}

} // namespace

Action getPlaces(std::vector<std::string> places, std::string folder, bool overwrite)
{
    if (folder.empty())
        folder = takeFolder(places);
    for (const std::string& text : places) {
        const Place place = parsePlace(text);
        if (place.kind == Place::Kind::Path && place.components.empty())
            refuse("'/' stands for all disks: name a disk, a folder or a file; 'lumo disks' lists the disks");
    }
    return [places, folder, overwrite](Session& session) { runGet(session, places, folder, overwrite); };
}

} // namespace cli
