#include "cli/Connection.h"
#include "cli/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/Output.h"

#include "lumo/core/LumoDataMgr.h"

namespace cli {

namespace {

unsigned int madeFolder(Session& session, const FoundPart& missing)
{
    const auto disk = session.catalogue.diskOf(missing.found);
    const unsigned int parent = session.catalogue.folderOf(missing.found);
    if (!disk)
        throw Failure(ExitCode::PlaceNotFound, "the folder's disk is not there");
    session.journal.forget();
    const unsigned int id =
        session.manager.createFolder(disk->diskID, parent, QString::fromStdString(missing.names));
    if (id == kNone || id == 0)
        requestFailed(session.journal);
    return id;
}

class MkdirCommand : public Command
{
public:
    explicit MkdirCommand(CLI::App& app)
    {
        addArgument(app, "PLACE", m_Typed, "The new folder's path");
        addFlag(app, "--parents", m_Parents,
                "Make the missing folders on the way to it too; succeed when it exists already");
    }

    void check(Options& /*options*/) override
    {
        m_Place = parsePlace(m_Typed);
        if (m_Place.kind != Place::Kind::Path || m_Place.components.size() < 2)
            refuse("'" + m_Typed + "' can't be a new folder: write its path, as in /disk/folder");
    }

    void run(Session& session) override
    {
        const FoundPart missing = session.catalogue.findWithMissing(m_Place);
        const bool file = missing.found.kind == Place::Kind::File;
        if (missing.names.empty() && (!m_Parents || file))
            refuse("'" + m_Typed + "' exists already");
        if (file)
            throw Failure(ExitCode::PlaceNotFound, "a file is in the way of '" + m_Typed + "'");
        if (missing.names.find('/') != std::string::npos && !m_Parents) {
            throw Failure(ExitCode::PlaceNotFound,
                          "the parent folder of '" + m_Typed + "' does not exist; --parents makes it, too");
        }
        const unsigned int id =
            missing.names.empty() ? missing.found.folder.folderID : madeFolder(session, missing);
        print(session.json ? jsonText({{"folderID", id}}) : identifierText("folder", id) + "\n");
    }

private:
    std::string m_Typed;
    bool m_Parents = false;
    Place m_Place;
};

} // namespace

void addMkdir(CommandSet& commands)
{
    commands.add<MkdirCommand>("mkdir", "Make a folder");
}

} // namespace cli
