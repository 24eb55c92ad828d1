#include "cli/base/ExitCode.h"
#include "cli/base/LocalFiles.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/commands/TreeOptions.h"
#include "cli/moving/Mover.h"
#include "cli/progress/TreeTransfer.h"

#include <fstream>
#include <iostream>
#include <memory>
#include <mutex>
#include <optional>
#include <set>

namespace cli {

namespace {

/// Where the sources go: into a folder, or a single file to a name in it.
struct Target
{
    lumo::Entry folder;
    std::string name; ///< of the file; empty: its own
};

/// Copies standard input to a file.
void spool(const std::string& path)
{
    std::ofstream file(path, std::ios::binary);
    file << std::cin.rdbuf();
    file.clear(file.rdstate() & ~std::ios::failbit); // set for an empty input, too
    if (!file.flush() || std::cin.bad())
        throw Failure(ExitCode::Other, "can't keep standard input in '" + path + "'");
}

class PutCommand : public Command
{
public:
    explicit PutCommand(CLI::App& app)
    {
        m_Moving.add(app);
        m_Tree.addRun(app);
        m_Tree.addFilter(app);
        addArgument(
            app, "PATH", m_Paths,
            "What to send, - for standard input; the last argument is the PLACE to put it in, or of a "
            "single file the new one's path");
        explain(app, kPlaceHelp);
    }

    void check(Options& options) override
    {
        MovingOptions::apply(options);
        m_Tree.apply(true);
        if (m_Paths.size() < 2)
            refuse("put takes what to send and where to: lumo put PATH... PLACE");
        m_Typed = m_Paths.back();
        m_Paths.pop_back();
        m_Place = parsePlace(m_Typed);
        if (m_Paths.size() == 1 && m_Paths.front() == "-")
            return;
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
        const Target target = findTarget(session.catalogue());
        std::optional<TemporaryFolder> folder;
        if (m_Sources.empty()) {
            if (target.name.empty())
                refuse("standard input has no name: write the new file's path, as in /disk/folder/file");
            const std::string path = folder.emplace().path() + "/input";
            spool(path);
            m_Sources.push_back({path, target.name, false, bytesOf(path)});
        }
        std::vector<Transfer> transfers;
        for (std::size_t i = 0; i < m_Sources.size(); ++i) {
            transfers.push_back(transferOf(session, m_Sources[i], target));
            transfers.back().source = m_Paths[i] == "-" ? "-" : below(".", m_Sources[i].path);
        }
        runTransfers(std::move(transfers), json);
    }

private:
    bool isOneFile() const { return m_Sources.empty() || (m_Sources.size() == 1 && !m_Sources[0].folder); }

    Target findTarget(const lumo::Catalogue& catalogue)
    {
        if (!isOneFile() || m_Place.kind() != lumo::Place::Kind::Path || m_Place.mustBeFolder()) {
            m_Place.requireFolder();
            const lumo::Entry found = catalogue.find(m_Place);
            if (found.kind == lumo::Entry::Kind::File)
                throw Failure(ExitCode::NotFound, "'" + m_Typed + "' is a file, not a folder");
            return {found, {}};
        }
        const lumo::Catalogue::Part part = catalogue.findPart(m_Place);
        const bool isFile = part.found.kind == lumo::Entry::Kind::File;
        if (isFile ? !part.missing.empty() : part.missing.find('/') != std::string::npos)
            static_cast<void>(catalogue.find(m_Place)); // throws
        if (isFile)
            return {catalogue.find(part.found.parent), m_Place.names().back()};
        return {part.found, part.missing};
    }

    Transfer transferOf(const lumo::Session& session, const LocalSource& source, const Target& target) const
    {
        Transfer transfer;
        transfer.target = m_Typed;
        if (target.name.empty())
            transfer.target += (m_Typed.back() == '/' ? "" : "/") + source.name;
        transfer.get = false;
        transfer.reportsProgress = true;
        transfer.overwrite = m_Moving.overwrite;
        transfer.bytes = source.bytes;
        transfer.movesFile = !source.folder;
        if (source.folder || !target.name.empty()) {
            const std::string name = target.name.empty() ? source.name : target.name;
            moveAsTree(transfer, m_Turn,
                       [this, &session, source, folder = target.folder,
                        name](const PlanRun::Advanced& advanced, const PlanRun::Failed& failed) {
                           return putTree(session, source, folder, name, advanced, failed);
                       });
            return transfer;
        }
        transfer.start = [transfers = session.transfers(), path = source.path,
                          folder = target.folder](const lumo::Transfers::Options& options) {
            return std::make_shared<lumo::Transfer>(transfers.put(path, folder, options));
        };
        return transfer;
    }

    RunResult putTree(const lumo::Session& session, const LocalSource& source, const lumo::Entry& target,
                      const std::string& name, const PlanRun::Advanced& advanced,
                      const PlanRun::Failed& failed) const
    {
        const lumo::BoxPlace folder = session.transfers().at(target);
        const Tree there = boxTree(folder.below(name), Filter());
        Plan plan = makePlan(localTree(source.path, m_Tree.filter), there,
                             m_Moving.overwrite ? Compare::Nothing : Compare::Existence, false);
        const auto mover = moverTo(source.path, folder, session.catalogue(), target, name);
        return PlanRun(plan, *mover, m_Tree.run, advanced, failed).run();
    }

    MovingOptions m_Moving;
    TreeOptions m_Tree;
    std::shared_ptr<std::mutex> m_Turn = std::make_shared<std::mutex>();
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
