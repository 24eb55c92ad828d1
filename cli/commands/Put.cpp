#include "cli/base/ExitCode.h"
#include "cli/base/LocalFiles.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/progress/Transfer.h"

#include <set>

namespace cli {

namespace {

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
        m_Typed = m_Paths.back();
        m_Paths.pop_back();
        m_Place = parsePlace(m_Typed);
        std::set<std::string> names;
        for (const std::string& path : m_Paths) {
            m_Sources.push_back(localSource(path));
            if (!names.insert(m_Sources.back().name).second) {
                refuse("two of the paths are named '" + m_Sources.back().name +
                       "': put them one by one, into two folders");
            }
        }
    }

    void run(lumo::Session& session, bool json) override
    {
        m_Place.requireFolder();
        const lumo::Entry target = session.catalogue().find(m_Place);
        if (target.kind == lumo::Entry::Kind::File)
            throw Failure(ExitCode::NotFound, "'" + m_Typed + "' is a file, not a folder");
        std::vector<Transfer> transfers;
        for (const LocalSource& source : m_Sources)
            transfers.push_back(transferOf(session, source, target));
        runTransfers(std::move(transfers), json);
    }

private:
    Transfer transferOf(const lumo::Session& session, const LocalSource& source,
                        const lumo::Entry& target) const
    {
        Transfer transfer;
        transfer.source = below(".", source.path);
        transfer.target = m_Typed + (m_Typed.back() == '/' ? "" : "/") + source.name;
        transfer.get = false;
        transfer.reportsProgress = true;
        transfer.overwrite = m_Moving.overwrite;
        transfer.bytes = source.bytes;
        transfer.movesFile = !source.folder;
        transfer.start = [transfers = session.transfers(), path = source.path,
                          target](const lumo::Transfers::Options& options) {
            return transfers.put(path, target, options);
        };
        return transfer;
    }

    MovingOptions m_Moving;
    std::vector<std::string> m_Paths;
    std::string m_Typed;
    lumo::Place m_Place = "/";
    std::vector<LocalSource> m_Sources;
};

} // namespace

void addPut(CommandSet& commands)
{
    commands.add<PutCommand>("put", "Send local files and folders to a disk or a folder of the catalogue");
}

} // namespace cli
