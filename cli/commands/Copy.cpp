#include "cli/base/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Output.h"

#include <functional>

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

    void check(Options& options) override
    {
        m_Timeout = lumo::Session::Settings::milliseconds(options.timeout);
    }

protected:
    static void requireAbsolute(const std::string& path)
    {
        if (path.empty() || path.front() != '/') {
            refuse("'" + path +
                   "' is not a path on the centre's machine: write it from the root, as in /srv/new/a.tif");
        }
    }

    /// Has `copy` make the copy, and prints the result.
    void report(bool json, const std::function<void()>& copy) const
    {
        const std::string names = m_Source + " -> " + m_Target;
        try {
            copy();
        } catch (const lumo::Error& error) {
            if (error.operation() != "fileCopy")
                throw;
            throw Failure(ExitCode::TransferFailed, names + ": " + error.what());
        }
        print(json ? jsonText({{"source", m_Source}, {"target", m_Target}}) : escaped(names) + ": done\n");
    }

    std::string m_Source;
    std::string m_Target;
    bool m_Overwrite = false;
    unsigned int m_Timeout = 0;
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

    void run(lumo::Session& session, bool json) override
    {
        const lumo::Catalogue catalogue = session.catalogue();
        const lumo::Catalogue::Part folder =
            m_Parents ? catalogue.findPart(m_Place) : lumo::Catalogue::Part{catalogue.find(m_Place), {}};
        if (folder.found.kind == lumo::Entry::Kind::File)
            throw Failure(ExitCode::NotFound, "'" + m_Target + "' is not a folder");
        report(json, [&] {
            session.centre().copyIn(m_Source, folder.found, folder.missing, m_Overwrite, m_Timeout);
        });
    }

private:
    bool m_Parents = false;
    lumo::Place m_Place = "/";
};

class CopyOutCommand : public CopyCommand
{
public:
    explicit CopyOutCommand(CLI::App& app) : CopyCommand(app)
    {
        addArgument(app, "PLACE", m_Source, "A file of the catalogue");
        addArgument(app, "TARGET", m_Target, "The folder or the new file on the centre's machine");
    }

    void check(Options& options) override
    {
        CopyCommand::check(options);
        requireAbsolute(m_Target);
        m_Place = lumo::Place(m_Source);
    }

    void run(lumo::Session& session, bool json) override
    {
        const lumo::Entry file = findFile(session.catalogue(), m_Place, m_Source);
        report(json, [&] { session.centre().copyOut(file, m_Target, m_Overwrite, m_Timeout); });
    }

private:
    lumo::Place m_Place = "/";
};

} // namespace

void addCopies(CommandSet& commands)
{
    commands.add<CopyInCommand>("copy-in",
                                "Have the centre copy a file of its own machine to a disk or folder");
    commands.add<CopyOutCommand>("copy-out",
                                 "Have the centre copy a file of the catalogue to a path of its own machine");
}

} // namespace cli
