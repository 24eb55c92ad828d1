#include "cli/base/ExitCode.h"
#include "cli/base/LocalFiles.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/Output.h"

#include <vector>

namespace cli {

namespace {

/// Prints a local file.
void printFile(const std::string& path)
{
    std::ifstream file = openedFile(path, "'" + path + "'");
    std::string part(1U << 20, '\0');
    while (file.read(part.data(), static_cast<std::streamsize>(part.size())) || file.gcount() > 0)
        print(part.substr(0, static_cast<std::size_t>(file.gcount())));
}

class CatCommand : public Command
{
public:
    explicit CatCommand(CLI::App& app)
    {
        addArgument(app, "PLACE", m_Typed, "The files to print, one after the other");
        explain(app,
                std::string(kPlaceHelp) + " Each file is fetched whole and verified\nbefore it is printed.");
    }

    void check(Options& options) override
    {
        MovingOptions::apply(options);
        for (const std::string& typed : m_Typed)
            m_Places.push_back(parsePlace(typed));
    }

    void run(lumo::Session& session, bool /*json*/) override
    {
        std::vector<lumo::Entry> files;
        for (std::size_t i = 0; i < m_Places.size(); ++i)
            files.push_back(findFile(session.catalogue(), m_Places[i], m_Typed[i]));
        const TemporaryFolder folder;
        for (std::size_t i = 0; i < files.size(); ++i) {
            const std::string path = folder.path() + "/file";
            const lumo::Transfer::Outcome outcome = session.transfers().at(files[i]).get(path, true);
            if (!outcome.done())
                throw Failure(ExitCode::TransferFailed, m_Typed[i] + ": " + outcome.text);
            printFile(path);
        }
    }

private:
    std::vector<std::string> m_Typed;
    std::vector<lumo::Place> m_Places;
};

} // namespace

void addCat(CommandSet& commands)
{
    commands.add<CatCommand>("cat", "Print files of the catalogue");
}

} // namespace cli
