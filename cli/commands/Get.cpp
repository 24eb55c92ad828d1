#include "cli/base/ExitCode.h"
#include "cli/base/LocalFiles.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/commands/TreeOptions.h"
#include "cli/moving/Mover.h"
#include "cli/progress/TreeTransfer.h"

#include <algorithm>
#include <iterator>
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
        const lumo::Place place(text);
        return true;
    } catch (const lumo::Error&) {
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
    lumo::Entry entry;
    std::string name; ///< of the local file or folder; empty when it is not known
};

/// Refuses a target that another source may write to, or that exists and is of the other kind.
void checkTarget(const Source& source, bool single, const std::string& folder, std::set<std::string>& targets)
{
    if (source.name.empty() && single)
        return;
    if (source.name.empty()) {
        refuse("the name of '" + source.text +
               "' is too long for its record: write its path, or get it alone");
    }
    const std::string target = below(folder, source.name);
    if (!targets.insert(target).second)
        refuse("two of the places would become '" + target + "': get them one by one, into two folders");
    const bool file = source.entry.kind == lumo::Entry::Kind::File;
    if (file ? isFolder(target) : isFileOrLink(target)) {
        refuse("'" + source.text + "' is a " + (file ? "file" : "folder") + ", but '" + target + "' is a " +
               (file ? "folder" : "file"));
    }
}

class GetCommand : public Command
{
public:
    explicit GetCommand(CLI::App& app)
    {
        m_Moving.add(app);
        m_Tree.addRun(app);
        m_Tree.addFilter(app);
        addArgument(app, "PLACE", m_Typed,
                    "What to fetch; the last of several arguments is the local folder");
        addOption(app, "--to", m_Folder, "DIR", "The local folder; all arguments are places then")
            ->check(someName);
        explain(app, std::string(kPlaceHelp) +
                         " The local folder is made if need be; without\none, files go to the current "
                         "folder.");
    }

    void check(Options& options) override
    {
        MovingOptions::apply(options);
        m_Tree.apply(false);
        if (m_Folder.empty())
            m_Folder = takeFolder(m_Typed);
        std::transform(m_Typed.begin(), m_Typed.end(), std::back_inserter(m_Places), parsePlace);
    }

    void run(lumo::Session& session, bool json) override
    {
        const lumo::Catalogue catalogue = session.catalogue();
        std::vector<Source> sources;
        std::set<std::string> targets;
        for (std::size_t i = 0; i < m_Places.size(); ++i) {
            const lumo::Entry entry = catalogue.find(m_Places[i]);
            const std::vector<std::string>& names = m_Places[i].names();
            sources.push_back({m_Typed[i], entry, names.empty() ? entry.name.value_or("") : names.back()});
            checkTarget(sources.back(), m_Places.size() == 1, m_Folder, targets);
        }
        makeFolder(m_Folder);
        std::vector<Transfer> transfers;
        transfers.reserve(sources.size());
        for (const Source& source : sources)
            transfers.push_back(transferOf(session, source));
        runTransfers(std::move(transfers), json);
    }

private:
    Transfer transferOf(const lumo::Session& session, const Source& source) const
    {
        Transfer transfer;
        transfer.source = source.text;
        transfer.target = below(m_Folder, source.name);
        transfer.folder = m_Folder;
        transfer.overwrite = m_Moving.overwrite;
        if (source.entry.kind != lumo::Entry::Kind::File && !source.name.empty() && !pathsAreConverted()) {
            moveAsTree(transfer, m_Turn,
                       [this, &session, source, target = transfer.target](const PlanRun::Advanced& advanced,
                                                                          const PlanRun::Failed& failed) {
                           return getTree(session, source.entry, target, advanced, failed);
                       });
            return transfer;
        }
        transfer.start = [this, transfers = session.transfers(),
                          entry = source.entry](const lumo::Transfers::Options& options) {
            return std::make_shared<lumo::Transfer>(transfers.get(entry, m_Folder, options));
        };
        return transfer;
    }

    /// Whether the library copies files from where this machine sees those of the boxes itself.
    static bool pathsAreConverted() { return isFileOrLink("convert.cfg") || isFileOrLink("../convert.cfg"); }

    RunResult getTree(const lumo::Session& session, const lumo::Entry& entry, const std::string& target,
                      const PlanRun::Advanced& advanced, const PlanRun::Failed& failed) const
    {
        const lumo::Catalogue catalogue = session.catalogue();
        const lumo::BoxPlace place = session.transfers().at(entry);
        const Tree onBox = sizesOf(place);
        const Tree source = catalogueTree(catalogue, catalogue.folderOf(entry), onBox, m_Tree.filter);
        const Tree there = localTree(target, Filter());
        Plan plan =
            makePlan(source, there, m_Moving.overwrite ? Compare::Nothing : Compare::Existence, false);
        plan.isWhole = plan.isWhole && hasSamePaths(source, onBox);
        const auto getByIdentifier = [&](lumo::FileId file, const std::string& folder) {
            return session.transfers().get(catalogue.find(file), folder, {m_Moving.overwrite, {}}).wait();
        };
        const auto mover = moverFrom(place, target, getByIdentifier);
        return PlanRun(plan, *mover, m_Tree.run, advanced, failed).run();
    }

    /// What the box has; nothing when it does not list it. The catalogue decides what is fetched.
    static Tree sizesOf(const lumo::BoxPlace& place)
    {
        try {
            return boxTree(place, Filter());
        } catch (const lumo::Error&) {
            return {};
        }
    }

    static bool hasSamePaths(const Tree& source, const Tree& onBox)
    {
        std::set<std::string> paths;
        for (const TreeItem& item : onBox.items)
            paths.insert(item.path);
        return source.items.size() == paths.size() &&
               std::all_of(source.items.begin(), source.items.end(),
                           [&paths](const TreeItem& item) { return paths.count(item.path) > 0; });
    }

    MovingOptions m_Moving;
    TreeOptions m_Tree;
    std::shared_ptr<std::mutex> m_Turn = std::make_shared<std::mutex>();
    std::vector<std::string> m_Typed;
    std::vector<lumo::Place> m_Places;
    std::string m_Folder;
};

} // namespace

void addGet(CommandSet& commands)
{
    commands.add<GetCommand>("get", "Fetch disks, folders and files into a local folder");
}

} // namespace cli
