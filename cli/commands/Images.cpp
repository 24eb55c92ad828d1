#include "cli/ExitCode.h"
#include "cli/ImageCatalogue.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"

#include "lumo/core/LumoDataMgr.h"

namespace cli {

namespace {

/// A command that lists records of the image catalogue.
class ListingCommand : public Command
{
public:
    explicit ListingCommand(CLI::App& app) { m_Records.addCsvAndLimit(app); }

    void check(Options& options) override { m_Records.apply(options); }

protected:
    void printList(const RecordList& list, const char* whenEmpty) const
    {
        RecordLists lists;
        lists.lists = {list};
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

    void run(Session& session) override
    {
        QList<tagDataTable> projects;
        answered(session, session.manager.getData(projects));
        printList(listOf(projects), "(the company has no projects)");
    }
};

class TypesCommand : public ListingCommand
{
public:
    explicit TypesCommand(CLI::App& app) : ListingCommand(app)
    {
        addArgument(app, "PROJECT", m_Project, kProjectHelp);
    }

    void run(Session& session) override
    {
        const unsigned int id = findProject(session, m_Project).projectID;
        printList(kindNamed("type").listIn(session, id), "(the project has no types)");
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
        app.add_option("--kind", m_KindWord, "All records of this kind in the project")->option_text("KIND");
        app.add_option("--mark", m_Mark, "Only records that have this mark, its identifier")
            ->option_text("MARK");
    }

    void check(Options& options) override
    {
        ListingCommand::check(options);
        if (m_KindWord.empty() && !m_Mark.empty())
            refuse("--mark takes a project and --kind, as in: lumo images north --kind sat --mark 1");
        if (m_KindWord.empty()) {
            m_Type = parseType(m_Name);
            return;
        }
        m_Kind = &kindNamed(m_KindWord);
        const bool listed = m_Mark.empty() ? m_Kind->listInProject != nullptr : m_Kind->listMarked != nullptr;
        if (!listed) {
            refuse("there is no list of the " + m_KindWord + " records of a project" +
                   (m_Mark.empty() ? "" : " that have a mark"));
        }
        m_MarkID = m_Mark.empty() ? kNone : parseIdentifier(m_Mark, "mark");
    }

    void run(Session& session) override
    {
        if (m_Kind == nullptr) {
            listType(session);
            return;
        }
        const unsigned int id = findProject(session, m_Name).projectID;
        if (m_MarkID == kNone)
            printList(m_Kind->listInProject(session, id), "(the project has no such records)");
        else
            printList(m_Kind->listMarked(session, id, m_MarkID), "(no such records have the mark)");
    }

private:
    void listType(Session& session) const
    {
        const tagTypeTable type = findType(session, m_Type);
        const Text name = textOf(recordText(type.dataType));
        const Kind* const kind = kindOfType(name);
        if (kind == nullptr) {
            refuse("type '" + m_Name + "' is named '" + name.value_or("") +
                   "', which is not a name that decides the kind of its records; those names are " +
                   decidingTypeNames());
        }
        printList(kind->listIn(session, type.typeID), "(the type has no records)");
    }

    std::string m_Name;
    std::string m_KindWord;
    std::string m_Mark;
    TypeName m_Type;
    const Kind* m_Kind = nullptr; ///< null: the records of m_Type
    unsigned int m_MarkID = kNone;
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
        m_ID = parseIdentifier(m_Typed, "control file");
    }

    void run(Session& session) override
    {
        kindNamed("control").find(m_Typed)(session);
        printList(kindNamed("point").listIn(session, m_ID), "(the control file has no points)");
    }

private:
    std::string m_Typed;
    unsigned int m_ID = kNone;
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
