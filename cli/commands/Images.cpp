#include "cli/base/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/ImageNames.h"
#include "cli/commands/SharedOptions.h"

#include <optional>

namespace cli {

namespace {

using Kind = lumo::Record::Kind;

/// A command that lists records of the image catalogue.
class ListingCommand : public Command
{
public:
    explicit ListingCommand(CLI::App& app) { m_Records.addCsvAndLimit(app); }

    void check(Options& options) override { m_Records.apply(options); }

protected:
    void printList(Kind kind, std::vector<lumo::Record> records, const char* whenEmpty) const
    {
        RecordLists lists;
        lists.lists = {listOf(kind, std::move(records))};
        lists.whenEmpty = whenEmpty;
        limit(lists, m_Records.limit);
        printRecords(lists, m_Records.form);
    }

private:
    RecordOptions m_Records;
};

class ProjectsCommand : public ListingCommand
{
public:
    using ListingCommand::ListingCommand;

    void run(lumo::Session& session, bool /*json*/) override
    {
        printList(Kind::Project, session.images().projects(), "(the company has no projects)");
    }
};

class TypesCommand : public ListingCommand
{
public:
    explicit TypesCommand(CLI::App& app) : ListingCommand(app)
    {
        addArgument(app, "PROJECT", m_Project, kProjectHelp);
    }

    void run(lumo::Session& session, bool /*json*/) override
    {
        const lumo::Images images = session.images();
        printList(Kind::Type, images.types(images.project(m_Project).projectId()),
                  "(the project has no types)");
    }

private:
    std::string m_Project;
};

/// The records of a type, or those of one kind in a project.
class ImagesCommand : public ListingCommand
{
public:
    explicit ImagesCommand(CLI::App& app) : ListingCommand(app)
    {
        addArgument(app, "TYPE", m_Name,
                    "A type's identifier, or PROJECT/TYPENAME as in north/DEM; with --kind a PROJECT");
        addOption(app, "--kind", m_KindWord, "KIND", "List all records of this kind in the project");
        addOption(app, "--mark", m_Mark, "MARK", "List only records that have the mark of this identifier");
    }

    void check(Options& options) override
    {
        ListingCommand::check(options);
        if (m_KindWord.empty() && !m_Mark.empty())
            refuse("--mark takes a project and --kind, as in: lumo images north --kind sat --mark 1");
        if (m_KindWord.empty()) {
            lumo::Images::checkTypeName(m_Name);
            return;
        }
        m_Kind = parseImageKind(m_KindWord);
        lumo::Images::checkList(*m_Kind, !m_Mark.empty());
        if (!m_Mark.empty())
            m_MarkID = lumo::CommentId(parseIdentifier(m_Mark, "mark"));
    }

    void run(lumo::Session& session, bool /*json*/) override
    {
        const lumo::Images images = session.images();
        if (!m_Kind) {
            const lumo::Record type = images.type(m_Name);
            std::vector<lumo::Record> records = images.records(type); // throws for a type of no kind
            printList(*lumo::Images::kindOfType(type), std::move(records), "(the type has no records)");
            return;
        }
        printList(*m_Kind, images.records(*m_Kind, images.project(m_Name).projectId(), m_MarkID),
                  m_MarkID.isSet() ? "(no such records have the mark)" : "(the project has no such records)");
    }

private:
    std::string m_Name;
    std::string m_KindWord;
    std::string m_Mark;
    std::optional<Kind> m_Kind; ///< none: the records of a type
    lumo::CommentId m_MarkID;
};

class PointsCommand : public ListingCommand
{
public:
    explicit PointsCommand(CLI::App& app) : ListingCommand(app)
    {
        addArgument(app, "CONTROL", m_Typed, "A control file's identifier");
    }

    void check(Options& options) override
    {
        ListingCommand::check(options);
        m_ID = lumo::RecordId(parseIdentifier(m_Typed, "control file"));
    }

    void run(lumo::Session& session, bool /*json*/) override
    {
        const lumo::Images images = session.images();
        images.record(Kind::Control, m_ID); // throws when there is no such file
        printList(Kind::Point, images.points(m_ID), "(the control file has no points)");
    }

private:
    std::string m_Typed;
    lumo::RecordId m_ID;
};

} // namespace

void addImages(CommandSet& commands)
{
    commands.add<ProjectsCommand>("projects", "List the data projects of your company");
    commands.add<TypesCommand>("types", "List the types of a project");
    commands.add<ImagesCommand>("images",
                                "List the images, products or control files of a type or a project");
    commands.add<PointsCommand>("points", "List the points of a control file");
}

} // namespace cli
