#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Records.h"

namespace cli {

namespace {

void listDisks(const lumo::Catalogue& catalogue, bool json)
{
    const std::vector<lumo::Entry> disks = catalogue.disks();
    if (json) {
        print(jsonText(listedJson(disks)));
        return;
    }
    Table table({"IDENTIFIER", "NAME", "BOX", "ROOT"});
    for (const lumo::Entry& disk : disks)
        table.add({identifierText(disk), shownName(disk.name), shownText(disk.box), shownText(disk.root)});
    print(disks.empty() ? "(the company has no disks)\n" : table.text(listWidth()));
}

class DisksCommand : public Command
{
public:
    explicit DisksCommand(CLI::App& /*app*/) {}
    void run(lumo::Session& session, bool json) override { listDisks(session.catalogue(), json); }
};

class LsCommand : public Command
{
public:
    explicit LsCommand(CLI::App& app)
    {
        addOptionalArgument(app, "PLACE", m_Typed, "A path, or an identifier with its kind");
        explain(app, std::string(kPlaceHelp) + " \"/\" means all disks.");
    }

    void check(Options& /*options*/) override { m_Place = lumo::Place(m_Typed); }

    void run(lumo::Session& session, bool json) override
    {
        const lumo::Catalogue catalogue = session.catalogue();
        if (m_Place.isRoot()) {
            listDisks(catalogue, json);
            return;
        }
        const lumo::Entry found = catalogue.find(m_Place);
        if (found.kind == lumo::Entry::Kind::File) {
            printListing({}, {found}, json);
        } else {
            const lumo::FolderId folder = catalogue.folderOf(found);
            printListing(catalogue.folders(folder), catalogue.files(folder), json);
        }
    }

private:
    std::string m_Typed = "/";
    lumo::Place m_Place = "/";
};

} // namespace

void addDisks(CommandSet& commands)
{
    commands.add<DisksCommand>("disks", "List the disks of your company");
    commands.add<LsCommand>("ls", "List the contents of a disk or folder (without PLACE: the disks)");
}

} // namespace cli
