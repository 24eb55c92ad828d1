#include "cli/Connection.h"
#include "cli/ExitCode.h"
#include "cli/ImageCatalogue.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"

#include "lumo/core/LumoDataMgr.h"

namespace cli {

namespace {

constexpr const char* kLinkedHelp = "A disk, a folder or a file";

/// A place that can be linked: not all disks at once.
Place parseLinked(const std::string& text)
{
    Place place = parsePlace(text);
    if (place.kind == Place::Kind::Path && place.components.empty())
        refuse("'/' means all disks, which have no project in common: name a disk, a folder or a file");
    return place;
}

/// link and unlink.
class LinkCommand : public Command
{
public:
    LinkCommand(CLI::App& app, bool links) : m_Links(links)
    {
        addArgument(app, "PROJECT", m_Project, kProjectHelp);
        addArgument(app, "PLACE", m_Typed, kLinkedHelp);
        explain(app, std::string(kPlaceHelp) + " A disk is its top folder.");
    }

    void check(Options& /*options*/) override { m_Place = parseLinked(m_Typed); }

    void run(Session& session) override
    {
        CLumoDataMgr& manager = session.manager;
        const unsigned int projectID = findProject(session, m_Project).projectID;
        const Found found = session.catalogue.find(m_Place);
        const bool file = found.kind == Place::Kind::File;
        const unsigned int id = file ? found.file.fileID : session.catalogue.folderOf(found);
        session.journal.forget();
        const bool done =
            file ? (m_Links ? manager.linkDataFile(projectID, id) : manager.unlinkDataFile(projectID, id))
            : m_Links ? manager.linkDataFolder(projectID, id)
                      : manager.unlinkDataFolder(projectID, id);
        // The library returns the same for an error of the centre and for a link that does not exist.
        if (!done && !m_Links && session.journal.lastReason().kind == Reason::Kind::ErrorResult) {
            throw Failure(ExitCode::PlaceNotFound,
                          "'" + m_Typed + "' is not linked to project '" + m_Project + "'");
        }
        if (!done)
            requestFailed(session.journal);
    }

private:
    bool m_Links;
    std::string m_Project;
    std::string m_Typed;
    Place m_Place;
};

class ProjectCommand : public Command
{
public:
    explicit ProjectCommand(CLI::App& app)
    {
        addArgument(app, "PLACE", m_Typed, kLinkedHelp);
        m_Records.addCsv(app);
        explain(app, kPlaceHelp);
    }

    void check(Options& options) override
    {
        m_Records.apply(options);
        m_Place = parseLinked(m_Typed);
    }

    void run(Session& session) override
    {
        const Found found = session.catalogue.find(m_Place);
        auto record = markedRecord<tagDataTable>();
        session.journal.forget();
        const bool linked = found.kind == Place::Kind::File
                                ? session.manager.getDataByFile(found.file.fileID, record)
                                : session.manager.getDataByFolder(session.catalogue.folderOf(found), record);
        // The library returns the same for an error of the centre and for a place without a project.
        if (!linked && session.journal.lastReason().kind == Reason::Kind::ErrorResult)
            throw Failure(ExitCode::PlaceNotFound, "'" + m_Typed + "' is not linked to a project");
        if (!linked)
            requestFailed(session.journal);
        printRecord(listOfOne(record), m_Records.form);
    }

private:
    std::string m_Typed;
    RecordOptions m_Records;
    Place m_Place;
};

} // namespace

void addLinks(CommandSet& commands)
{
    commands.add<LinkCommand>("link", "Link a project and a folder or file", true);
    commands.add<LinkCommand>("unlink", "Remove such a link", false);
    commands.add<ProjectCommand>("project", "Show the project that a folder or file is linked to");
}

} // namespace cli
