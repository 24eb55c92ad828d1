#include "cli/base/ExitCode.h"
#include "cli/base/LocalFiles.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/commands/TreeOptions.h"
#include "cli/moving/Comparison.h"
#include "cli/moving/Mover.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Output.h"
#include "cli/progress/TreeTransfer.h"

#include <algorithm>
#include <optional>

namespace cli {

namespace {

/// One of the two sides that were typed: a place of the catalogue, or a local folder.
struct Side
{
    std::string typed;
    std::string path; ///< of a local folder
    std::optional<lumo::Place> place;
};

Side sideOf(const std::string& typed)
{
    static const std::string kLocal = "local:";
    if (typed.compare(0, kLocal.size(), kLocal) == 0)
        return {typed, typed.substr(kLocal.size()), std::nullopt};
    try {
        const lumo::Place place(typed);
        return {typed, {}, parsePlace(typed)};
    } catch (const lumo::Error&) {
        return {typed, typed, std::nullopt};
    }
}

std::string word(Action action)
{
    switch (action) {
    case Action::Add:
        return "new";
    case Action::Change:
        return "changed";
    case Action::Remove:
        return "removed";
    case Action::Fail:
        return "failed";
    case Action::MakeFolder:
        return "folder";
    case Action::Skip:
        return "skipped";
    case Action::Keep:
        break;
    }
    return "kept";
}

/// What sync and check have in common.
class TwoSidedCommand : public Command
{
public:
    explicit TwoSidedCommand(CLI::App& app)
    {
        addArgument(app, "SOURCE", m_Typed[0], "A folder: a PLACE of the catalogue, or a local one");
        addArgument(app, "TARGET", m_Typed[1], "The other one; one of the two is a PLACE");
        CLI::Option* const size =
            addFlag(app, "--size-only", m_SizeOnly, "Compare files by their sizes, not by their contents");
        addFlag(app, "--checksum", m_Checksum,
                "Compare files of the same size by their contents (the default)")
            ->excludes(size);
        m_Tree.addFilter(app);
        explain(app, std::string(kPlaceHelp) +
                         " A local path that begins with '/'\nis written as in local:/home/ada/survey.");
    }

    void check(Options& options) override
    {
        MovingOptions::apply(options);
        m_Source = sideOf(m_Typed[0]);
        m_Target = sideOf(m_Typed[1]);
        if (m_Source.place.has_value() == m_Target.place.has_value()) {
            refuse(m_Source.place ? "both are places of the catalogue: a local path that begins with '/' is "
                                    "written as in local:/home/ada/survey"
                                  : "both are local: a place of the catalogue begins with '/'");
        }
        m_Tree.apply(!isGet());
    }

protected:
    bool isGet() const { return m_Source.place.has_value(); }
    const std::string& local() const { return isGet() ? m_Target.path : m_Source.path; }

    /// Lists both sides and compares them. Throws when a list is not whole.
    Plan planFor(const lumo::BoxPlace& place, bool remove) const
    {
        const Tree box = boxTree(place, m_Tree.filter);
        const Tree here = localTree(local(), m_Tree.filter);
        const Tree& source = isGet() ? box : here;
        if (!source.exists)
            throw Failure(ExitCode::NotFound, "there is no '" + m_Typed[0] + "'");
        return makePlan(source, isGet() ? here : box, m_SizeOnly ? Compare::Size : Compare::Content, remove,
                        contentComparison(place, box, source, local(), m_Tree.run.transfers));
    }

    /// The folder of the place, and what of its path does not exist.
    lumo::Catalogue::Part findPlace(const lumo::Session& session) const
    {
        const lumo::Place& place = isGet() ? *m_Source.place : *m_Target.place;
        lumo::Catalogue::Part part{session.catalogue().findPart(place)};
        if (isGet() && !part.missing.empty())
            part.found = session.catalogue().find(place); // throws
        if (part.found.kind == lumo::Entry::Kind::File)
            refuse("'" + m_Typed[isGet() ? 0 : 1] + "' is a file: get and put move single files");
        if (!isGet() && !isFolder(local()))
            refuse("there is no local folder '" + local() + "'");
        return part;
    }

    std::string m_Typed[2];
    Side m_Source;
    Side m_Target;
    bool m_SizeOnly = false;
    bool m_Checksum = false;
    TreeOptions m_Tree;
};

void printPlan(const Plan& plan, bool json)
{
    std::string lines;
    for (const PlanItem& item : plan.items) {
        if (item.action == Action::Keep || item.action == Action::Skip)
            continue;
        Json line = {{"action", word(item.action)}, {"path", item.path}};
        if (item.bytes)
            line["bytes"] = *item.bytes;
        if (!item.reason.empty())
            line["message"] = item.reason;
        lines += json ? jsonLine(line)
                      : word(item.action) + " " + escaped(item.path) +
                            (item.reason.empty() ? "" : ": " + escaped(item.reason)) + "\n";
    }
    print(lines);
}

class SyncCommand : public TwoSidedCommand
{
public:
    explicit SyncCommand(CLI::App& app) : TwoSidedCommand(app)
    {
        m_Tree.addRun(app);
        addFlag(app, "--delete", m_Delete, "Remove local files and folders that the source does not have");
        addFlag(app, "--dry-run", m_DryRun, "Print what would be done, and do nothing");
    }

    void check(Options& options) override
    {
        TwoSidedCommand::check(options);
        if (m_Delete && !isGet())
            refuse("--delete removes local files only: a centre has no operation that removes files");
    }

    void run(lumo::Session& session, bool json) override
    {
        const lumo::Catalogue::Part part = findPlace(session);
        const lumo::BoxPlace place = session.transfers().at(part.found);
        const lumo::BoxPlace side = place.below(part.missing);
        if (m_DryRun) {
            const Plan plan = planFor(side, m_Delete);
            printPlan(plan, json);
            if (!json)
                print(textOf(plan.counts()) + "\n");
            return;
        }
        if (isGet())
            makeFolder(local());
        Transfer transfer;
        transfer.source = m_Typed[0];
        transfer.target = m_Typed[1];
        transfer.get = isGet();
        moveAsTree(transfer, std::make_shared<std::mutex>(),
                   [&](const PlanRun::Advanced& advanced, const PlanRun::Failed& failed) {
                       Plan plan = planFor(side, m_Delete);
                       const auto mover =
                           isGet() ? moverFrom(side, local())
                                   : moverTo(local(), place, session.catalogue(), part.found, part.missing);
                       return PlanRun(plan, *mover, m_Tree.run, advanced, failed).run();
                   });
        runTransfers({transfer}, json);
    }

private:
    bool m_Delete = false;
    bool m_DryRun = false;
};

class CheckCommand : public TwoSidedCommand
{
public:
    using TwoSidedCommand::TwoSidedCommand;

    void run(lumo::Session& session, bool json) override
    {
        const lumo::Catalogue::Part part = findPlace(session);
        Plan plan = planFor(session.transfers().at(part.found).below(part.missing), true);
        printPlan(plan, json);
        flushOutput();
        const Counts counts = plan.counts();
        const std::size_t different = counts.added + counts.changed + counts.removed + counts.failed;
        if (different > 0)
            throw Failure(ExitCode::TransferFailed, "the two differ: " + textOf(counts) +
                                                        " (new: the source alone has it; removed: the "
                                                        "target alone)");
    }
};

} // namespace

void addSync(CommandSet& commands)
{
    commands.add<SyncCommand>("sync", "Make a folder like another one, either way");
    commands.add<CheckCommand>("check", "Compare a folder of the catalogue with a local one");
}

} // namespace cli
