#include "cli/base/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"

namespace cli {

namespace {

constexpr const char* kLinkedHelp = "A disk, a folder or a file";

/// Calls `ask` about a link, and reports one that does not exist by the names that were typed.
template <class Ask>
void askForLink(const std::string& whenMissing, Ask ask)
{
    try {
        ask();
    } catch (const lumo::Error& error) {
        if (error.kind() != lumo::Error::Kind::NotFound)
            throw;
        throw Failure(ExitCode::NotFound, whenMissing);
    }
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

    void check(Options& /*options*/) override { m_Place = parsePlace(m_Typed); }

    void run(lumo::Session& session, bool /*json*/) override
    {
        const lumo::Images images = session.images();
        const lumo::ProjectId project = images.project(m_Project).projectId();
        const lumo::Entry entry = session.catalogue().find(m_Place);
        if (m_Links)
            return images.link(project, entry);
        askForLink("'" + m_Typed + "' is not linked to project '" + m_Project + "'",
                   [&] { images.unlink(project, entry); });
    }

private:
    bool m_Links;
    std::string m_Project;
    std::string m_Typed;
    lumo::Place m_Place = "/";
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
        m_Place = parsePlace(m_Typed);
    }

    void run(lumo::Session& session, bool /*json*/) override
    {
        const lumo::Entry entry = session.catalogue().find(m_Place);
        askForLink("'" + m_Typed + "' is not linked to a project",
                   [&] { printRecord(session.images().projectOf(entry), m_Records.form); });
    }

private:
    std::string m_Typed;
    RecordOptions m_Records;
    lumo::Place m_Place = "/";
};

} // namespace

void addLinks(CommandSet& commands)
{
    commands.add<LinkCommand>("link", "Link a project and a disk, folder or file", true);
    commands.add<LinkCommand>("unlink", "Remove the link between a project and a disk, folder or file",
                              false);
    commands.add<ProjectCommand>("project", "Show the project that a disk, folder or file is linked to");
}

} // namespace cli
