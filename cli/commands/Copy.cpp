#include "cli/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/LaterAnswer.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Output.h"

#include "lumo/core/LumoDataMgr.h"

#include <atomic>
#include <memory>

namespace cli {

namespace {

/// A copy that the centre makes on its side.
class CopyCommand : public Command
{
public:
    explicit CopyCommand(CLI::App& app)
    {
        addFlag(app, "--overwrite", m_Overwrite, "Replace a file that exists at the target");
        explain(app, kPlaceHelp);
    }

    void check(Options& options) override { m_Timeout = parseTimeout(options.timeout); }

protected:
    static void requireAbsolute(const std::string& path)
    {
        if (path.empty() || path.front() != '/') {
            refuse("'" + path +
                   "' is not a path on the centre's machine: write it from the root, as in /srv/new/a.tif");
        }
    }

    /// Waits for the copy that `call` starts, which raises a signal when it is done.
    void copy(Session& session, const std::function<void()>& call) const
    {
        const auto done = std::make_shared<std::atomic<bool>>(false);
        const auto connection = QObject::connect(&session.manager, &CLumoDataMgr::reqFileCopyFinished,
                                                 [done](const QString&) { *done = true; });
        const LaterAnswer answer = await(session, "fileCopy", m_Timeout, call);
        QObject::disconnect(connection);
        const std::string names = m_Source + " -> " + m_Target;
        if (!*done) {
            throw Failure(
                ExitCode::TransferFailed,
                names + ": " +
                    (answer.errors.empty() ? std::string(kNoAnswer) : reasonText(answer.errors.front())));
        }
        print(session.json ? jsonText({{"source", m_Source}, {"target", m_Target}})
                           : escaped(names) + ": done\n");
    }

    std::string m_Source;
    std::string m_Target;
    bool m_Overwrite = false;

private:
    unsigned int m_Timeout = 0; ///< milliseconds; 0 for no limit
};

class CopyInCommand : public CopyCommand
{
public:
    explicit CopyInCommand(CLI::App& app) : CopyCommand(app)
    {
        addArgument(app, "SRC", m_Source, "The file's path on the centre's machine");
        addArgument(app, "PLACE", m_Target, "The disk or the folder to copy it to");
        addFlag(app, "--parents", m_Parents, "Make the folders of PLACE that are missing");
    }

    void check(Options& options) override
    {
        CopyCommand::check(options);
        requireAbsolute(m_Source);
        m_Place = parsePlace(m_Target);
    }

    void run(Session& session) override
    {
        const FoundPart folder = m_Parents ? session.catalogue.findWithMissing(m_Place)
                                           : FoundPart{session.catalogue.find(m_Place), {}};
        const auto disk = session.catalogue.diskOf(folder.found);
        if (folder.found.kind == Place::Kind::File || !disk)
            throw Failure(ExitCode::PlaceNotFound, "'" + m_Target + "' is not a folder");
        const unsigned int folderID = session.catalogue.folderOf(folder.found);
        copy(session, [&] {
            session.manager.fileCopy(QString::fromStdString(m_Source), disk->diskID, folderID,
                                     QString::fromStdString(folder.names), m_Overwrite);
        });
    }

private:
    bool m_Parents = false;
    Place m_Place;
};

class CopyOutCommand : public CopyCommand
{
public:
    explicit CopyOutCommand(CLI::App& app) : CopyCommand(app)
    {
        addArgument(app, "PLACE", m_Source, "A file of the catalogue");
        addArgument(app, "DIST", m_Target, "The folder or the new file on the centre's machine");
    }

    void check(Options& options) override
    {
        CopyCommand::check(options);
        requireAbsolute(m_Target);
        m_Place = parsePlace(m_Source);
    }

    void run(Session& session) override
    {
        const Found found = session.catalogue.find(m_Place);
        if (found.kind != Place::Kind::File)
            refuse("'" + m_Source + "' is not a file");
        copy(session, [&] {
            session.manager.fileCopy(found.file.fileID, QString::fromStdString(m_Target), m_Overwrite);
        });
    }

private:
    Place m_Place;
};

} // namespace

void addCopies(CommandSet& commands)
{
    commands.add<CopyInCommand>("copy-in", "Have the centre copy a file of its machine to a place");
    commands.add<CopyOutCommand>("copy-out",
                                 "Have the centre copy the file of a place to a path of its machine");
}

} // namespace cli
