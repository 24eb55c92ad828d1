#include "cli/base/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/Records.h"

namespace cli {

namespace {

class MkdirCommand : public Command
{
public:
    explicit MkdirCommand(CLI::App& app)
    {
        addArgument(app, "PLACE", m_Typed, "The new folder's path");
        addFlag(app, "-p,--parents", m_Parents,
                "Make the missing folders above it, too; succeed when it exists already");
    }

    void check(Options& /*options*/) override
    {
        m_Place = lumo::Place(m_Typed);
        if (m_Place.kind() != lumo::Place::Kind::Path || m_Place.names().size() < 2)
            refuse("'" + m_Typed + "' can't be a new folder: write its path, as in /disk/folder");
    }

    void run(lumo::Session& session, bool json) override
    {
        const lumo::Catalogue catalogue = session.catalogue();
        const auto [found, missing] = catalogue.findPart(m_Place);
        const bool file = found.kind == lumo::Entry::Kind::File;
        if (missing.empty() && (!m_Parents || file))
            refuse("'" + m_Typed + "' exists already");
        if (file)
            throw Failure(ExitCode::NotFound, "a file is in the way of '" + m_Typed + "'");
        if (missing.find('/') != std::string::npos && !m_Parents) {
            throw Failure(ExitCode::NotFound,
                          "the parent folder of '" + m_Typed + "' does not exist; --parents makes it, too");
        }
        const lumo::FolderId id = missing.empty() ? found.folder : catalogue.makeFolder(found, missing);
        print(json ? jsonText({{"folderID", id.number()}}) : identifierText("folder", id.number()) + "\n");
    }

private:
    std::string m_Typed;
    bool m_Parents = false;
    lumo::Place m_Place = "/";
};

} // namespace

void addMkdir(CommandSet& commands)
{
    commands.add<MkdirCommand>("mkdir", "Make a folder");
}

} // namespace cli
