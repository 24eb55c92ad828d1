#include "cli/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/LocalFiles.h"
#include "cli/commands/SharedOptions.h"
#include "cli/progress/Transfer.h"

#include "lumo/core/LumoDataMgr.h"

#include <set>

namespace cli {

namespace {

std::string someName(const std::string& text)
{
    return text.empty() ? "'' is not the name of a folder" : "";
}

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
    std::string name; ///< empty when it is not known
};

/// Reaches what the library offers to derived classes only.
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

/// The name of the local file or folder; it may be too long for its record.
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

/// Refuses a target that another source writes to, or that exists and is of the other kind.
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
               (file ? "folder" : "file"));
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

class GetCommand : public Command
{
public:
    explicit GetCommand(CLI::App& app)
    {
        m_Moving.add(app);
        addArgument(app, "PLACE", m_Places,
                    "What to fetch; the last of several arguments is the local folder");
        app.add_option("--to", m_Folder, "The local folder; all arguments are places then")
            ->option_text("DIR")
            ->check(someName);
        explain(app, std::string(kPlaceHelp) +
                         " The local folder is made if need be; without\none, files go to the current "
                         "folder.");
    }

    void check(Options& options) override
    {
        MovingOptions::apply(options);
        if (m_Folder.empty())
            m_Folder = takeFolder(m_Places);
        for (const std::string& text : m_Places) {
            const Place place = parsePlace(text);
            if (place.kind == Place::Kind::Path && place.components.empty())
                refuse("'/' means all disks: name a disk, a folder or a file; 'lumo disks' lists the disks");
        }
    }

    void run(Session& session) override { runGet(session, m_Places, m_Folder, m_Moving.overwrite); }

private:
    MovingOptions m_Moving;
    std::vector<std::string> m_Places;
    std::string m_Folder;
};

} // namespace

void addGet(CommandSet& commands)
{
    commands.add<GetCommand>("get", "Fetch disks, folders and files into a local folder");
}

} // namespace cli
