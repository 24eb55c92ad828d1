#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Records.h"

namespace cli {

namespace {

void listDisks(Session& session)
{
    const std::vector<Disk> disks = session.catalogue.disks();
    if (session.json) {
        print(jsonText(listedJson(disks)));
        return;
    }
    Table table({"IDENTIFIER", "NAME", "BOX", "ROOT"});
    for (const Disk& disk : disks) {
        table.add({identifierText("disk", disk.diskID), shownName(disk.diskName), shownText(disk.kestaCode),
                   shownText(disk.rootPath)});
    }
    print(disks.empty() ? "(the company has no disks)\n" : table.text(listWidth()));
}

class DisksCommand : public Command
{
public:
    explicit DisksCommand(CLI::App& /*app*/) {}
    void run(Session& session) override { listDisks(session); }
};

class LsCommand : public Command
{
public:
    explicit LsCommand(CLI::App& app)
    {
        addOptionalArgument(app, "PLACE", m_Typed, "A path, or an identifier with its kind");
        explain(app, std::string(kPlaceHelp) + " \"/\" means all disks.");
    }

    void check(Options& /*options*/) override { m_Place = parsePlace(m_Typed); }

    void run(Session& session) override
    {
        Catalogue& catalogue = session.catalogue;
        const Found found = catalogue.find(m_Place);
        if (found.kind == Place::Kind::Path) {
            listDisks(session);
        } else if (found.kind == Place::Kind::File) {
            printListing({}, {found.file}, session.json);
        } else {
            const unsigned int folderID = catalogue.folderOf(found);
            printListing(catalogue.foldersIn(folderID), catalogue.filesIn(folderID), session.json);
        }
    }

private:
    std::string m_Typed = "/";
    Place m_Place;
};

} // namespace

void addDisks(CommandSet& commands)
{
    commands.add<DisksCommand>("disks", "List the disks of your company");
    commands.add<LsCommand>("ls", "List the contents of a disk or folder (without PLACE: the disks)");
}

} // namespace cli
