#include "cli/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/LocalFiles.h"
#include "cli/commands/SharedOptions.h"
#include "cli/progress/Transfer.h"

#include "lumo/core/LumoDataMgr.h"

#include <set>

namespace cli {

namespace {

Transfer uploadOf(Session& session, const LocalSource& source, const std::string& place, const Found& found,
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
        transfers.push_back(uploadOf(session, source, placeText, found, overwrite));
    runTransfers(std::move(transfers), session);
}

class PutCommand : public Command
{
public:
    explicit PutCommand(CLI::App& app)
    {
        m_Moving.add(app);
        addArgument(app, "PATH", m_Paths, "What to send; the last argument is the PLACE to put it in");
        explain(app, kPlaceHelp);
    }

    void check(Options& options) override
    {
        MovingOptions::apply(options);
        if (m_Paths.size() < 2)
            refuse("put takes what to send and where to: lumo put PATH... PLACE");
        m_Place = m_Paths.back();
        m_Paths.pop_back();
        const Place place = parsePlace(m_Place);
        if (place.kind == Place::Kind::Path && place.components.empty())
            refuse("'/' means all disks: name the disk to put files on, as in /disk");
        std::set<std::string> names;
        for (const std::string& path : m_Paths) {
            m_Sources.push_back(localSource(path));
            if (!names.insert(m_Sources.back().name).second) {
                refuse("two of the paths are named '" + m_Sources.back().name +
                       "': put them one by one, into two folders");
            }
        }
    }

    void run(Session& session) override { runPut(session, m_Sources, m_Place, m_Moving.overwrite); }

private:
    MovingOptions m_Moving;
    std::vector<std::string> m_Paths;
    std::string m_Place;
    std::vector<LocalSource> m_Sources;
};

} // namespace

void addPut(CommandSet& commands)
{
    commands.add<PutCommand>("put", "Send local files and folders to a disk or a folder of the catalogue");
}

} // namespace cli
