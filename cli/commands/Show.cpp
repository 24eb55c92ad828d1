#include "cli/base/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/ImageNames.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Footprint.h"
#include "cli/output/Records.h"

#include <optional>

namespace cli {

namespace {

std::string parentText(lumo::FolderId parent)
{
    return parent == lumo::FolderId(0) ? "- (the disk's top folder)"
                                       : identifierText("folder", parent.number());
}

void printEntry(const lumo::Entry& entry, const lumo::Entry::Text& path)
{
    Table table({"", ""});
    table.add({"Identifier", identifierText(entry)});
    table.add({"Name", shownName(entry.name)});
    table.add({"Path", path.value_or("-")});
    if (entry.kind == lumo::Entry::Kind::Disk) {
        table.add({"Storage box", shownText(entry.box)});
        table.add({"Root", shownText(entry.root)});
        table.add({"Reference", entry.reference == kNoIdentifier ? "-" : std::to_string(entry.reference)});
    } else {
        if (entry.kind == lumo::Entry::Kind::Folder) {
            table.add({"Disk", identifierText("disk", entry.disk.number())});
            table.add({"Parent", parentText(entry.parent)});
        } else {
            table.add({"Folder", identifierText("folder", entry.parent.number())});
        }
        table.add({"Short text", shownText(entry.shortText)});
        table.add({"Long text", shownText(entry.longText)});
        if (const auto footprint = footprintOf(entry); footprint && entry.kind == lumo::Entry::Kind::File)
            table.add({"Bounds", boundsText(*footprint) + " (degrees)"});
    }
    print(table.text());
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
            m_Kind = parseImageKind(m_Typed);
            m_Records.apply(options);
            if (*m_Kind == Kind::Type)
                lumo::Images::checkTypeName(m_ID);
            else if (*m_Kind != Kind::Project)
                m_Record = lumo::RecordId(parseIdentifier(m_ID, m_Typed));
            return;
        }
        if (m_Records.csv)
            refuse("--csv is for records of the image catalogue, as in: lumo show sat 7 --csv");
        if (isImageKind(m_Typed))
            refuse("which " + m_Typed + "? write its identifier too: lumo show " + m_Typed + " ID");
        m_Place = parsePlace(m_Typed);
    }

    void run(lumo::Session& session, bool json) override
    {
        if (m_Kind)
            printRecord(findRecord(session.images()), m_Records.form);
        else
            showPlace(session.catalogue(), json);
    }

private:
    using Kind = lumo::Record::Kind;

    lumo::Record findRecord(const lumo::Images& images) const
    {
        if (*m_Kind == Kind::Project)
            return images.project(m_ID);
        return *m_Kind == Kind::Type ? images.type(m_ID) : images.record(*m_Kind, m_Record);
    }

    void showPlace(const lumo::Catalogue& catalogue, bool json) const
    {
        const lumo::Entry entry = catalogue.find(m_Place);
        const lumo::Entry::Text path = catalogue.pathOf(entry);
        if (json) {
            Json record = wholeJson(entry);
            record["path"] = textJson(path);
            if (const auto footprint = footprintOf(entry); footprint && entry.kind == lumo::Entry::Kind::File)
                record["bounds"] = boundsJson(*footprint);
            print(jsonText(record));
            return;
        }
        printEntry(entry, path);
    }

    std::string m_Typed;
    std::string m_ID;
    RecordOptions m_Records;
    std::optional<Kind> m_Kind; ///< of a record of the image catalogue; none: a place
    lumo::RecordId m_Record;
    lumo::Place m_Place = "/";
};

} // namespace

void addShow(CommandSet& commands)
{
    commands.add<ShowCommand>("show", "Show all fields of one record");
}

} // namespace cli
