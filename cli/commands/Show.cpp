#include "cli/ExitCode.h"
#include "cli/ImageCatalogue.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Records.h"

namespace cli {

namespace {

std::string parentOf(unsigned int folderID)
{
    return folderID == 0 ? "- (the disk's top folder)" : identifierText("folder", folderID);
}

void printTableOf(const Found& found, const Text& path)
{
    Table table({"", ""});
    const auto name = [&](const char* kind, unsigned int id, const Text& text) {
        table.add({"Identifier", identifierText(kind, id)});
        table.add({"Name", shownName(text)});
        table.add({"Path", path.value_or("-")});
    };
    const auto texts = [&table](const auto& record) {
        table.add({"Short text", shownText(record.shortText)});
        table.add({"Long text", shownText(record.longText)});
    };
    if (found.kind == Place::Kind::Disk) {
        name("disk", found.disk.diskID, found.disk.diskName);
        table.add({"Storage box", shownText(found.disk.kestaCode)});
        table.add({"Root", shownText(found.disk.rootPath)});
        table.add({"Reference", found.disk.refID == kNone ? "-" : std::to_string(found.disk.refID)});
    } else if (found.kind == Place::Kind::Folder) {
        name("folder", found.folder.folderID, found.folder.folderName);
        table.add({"Disk", identifierText("disk", found.folder.diskID)});
        table.add({"Parent", parentOf(found.folder.parentID)});
        texts(found.folder);
    } else {
        name("file", found.file.fileID, found.file.fileName);
        table.add({"Folder", identifierText("folder", found.file.parentID)});
        texts(found.file);
    }
    print(table.text());
}

Json jsonOf(const Found& found)
{
    switch (found.kind) {
    case Place::Kind::Disk:
        return wholeJson(found.disk);
    case Place::Kind::Folder:
        return wholeJson(found.folder);
    default:
        return wholeJson(found.file);
    }
}

class ShowCommand : public Command
{
public:
    explicit ShowCommand(CLI::App& app)
    {
        addArgument(app, "PLACE", m_Typed, "A place, or the KIND of a record of the image catalogue");
        addOptionalArgument(app, "ID", m_ID, "The record's identifier, after a KIND");
        m_Records.addCsv(app);
        explain(app, std::string(kPlaceHelp) + "\n\n" + kKindHelp +
                         "\nID is its number, for a project also its name, for a type also "
                         "PROJECT/TYPENAME.");
    }

    void check(Options& options) override
    {
        if (!m_ID.empty()) {
            m_Find = kindNamed(m_Typed).find(m_ID);
            m_Records.apply(options);
            return;
        }
        if (m_Records.csv)
            refuse("--csv is for records of the image catalogue, as in: lumo show sat 7 --csv");
        if (isKind(m_Typed))
            refuse("which " + m_Typed + "? write its identifier too: lumo show " + m_Typed + " ID");
        m_Place = parsePlace(m_Typed);
    }

    void run(Session& session) override
    {
        if (m_Find)
            printRecord(m_Find(session), m_Records.form);
        else
            showPlace(session);
    }

private:
    void showPlace(Session& session) const
    {
        const Found found = session.catalogue.find(m_Place);
        if (found.kind == Place::Kind::Path) {
            refuse(
                "'/' means all disks and has no record: name a disk, a folder or a file; 'lumo disks' lists "
                "the disks");
        }
        const Text path = session.catalogue.pathOf(found);
        if (session.json) {
            Json record = jsonOf(found);
            record["path"] = textJson(path);
            print(jsonText(record));
            return;
        }
        printTableOf(found, path);
    }

    std::string m_Typed;
    std::string m_ID;
    RecordOptions m_Records;
    FindRecord m_Find; ///< of a record of the image catalogue
    Place m_Place;
};

} // namespace

void addShow(CommandSet& commands)
{
    commands.add<ShowCommand>("show", "Show all fields of one record");
}

} // namespace cli
