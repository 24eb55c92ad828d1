#include "cli/base/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Output.h"

#include <algorithm>

namespace cli {

namespace {

class AnalyzeCommand : public Command
{
public:
    explicit AnalyzeCommand(CLI::App& app)
    {
        addArgument(app, "FILE", m_Typed, "An image file of the catalogue");
        addOption(app, "--sensor", m_Sensor, "NAME", "The sensor that made them");
        addFlag(app, "--note", m_Note, "Write what is found into the files' records");
        explain(app, "FILE is a path such as /disk/folder/file or an identifier such as file:33.\n"
                     "--timeout is the limit for all of them together.");
    }

    void check(Options& options) override
    {
        m_Timeout = lumo::Session::Settings::milliseconds(options.timeout);
        m_Places.assign(m_Typed.begin(), m_Typed.end());
    }

    void run(lumo::Session& session, bool json) override
    {
        const lumo::Catalogue catalogue = session.catalogue();
        std::vector<lumo::Entry> files;
        for (std::size_t i = 0; i < m_Places.size(); ++i)
            files.push_back(findFile(catalogue, m_Places[i], m_Typed[i]));
        const auto verdicts = session.centre().analyze(files, m_Sensor, m_Note, m_Timeout);
        show(catalogue, files, verdicts, json);
        const auto failed = std::count_if(verdicts.begin(), verdicts.end(),
                                          [](const auto& verdict) { return !verdict.passed; });
        requireAll(ExitCode::TransferFailed, static_cast<std::size_t>(failed), files.size(), "did not pass");
    }

private:
    void show(const lumo::Catalogue& catalogue, const std::vector<lumo::Entry>& files,
              const std::vector<lumo::Centre::Verdict>& verdicts, bool json) const
    {
        Json list = Json::array();
        for (std::size_t i = 0; i < files.size(); ++i) {
            const bool passed = verdicts[i].passed;
            const std::string note =
                passed && m_Note ? catalogue.find(files[i].file).shortText.value_or("") : std::string();
            list.push_back({{"file", m_Typed[i]}, {"fileID", files[i].file.number()}, {"passed", passed}});
            if (!passed) {
                list.back()["message"] = verdicts[i].reason;
                if (!json)
                    complain(m_Typed[i] + ": " + verdicts[i].reason);
            } else if (!json) {
                print(escaped(m_Typed[i] + ": passed" + (note.empty() ? "" : ", " + note)) + "\n");
            }
            if (!note.empty())
                list.back()["shortText"] = note;
        }
        if (json)
            print(jsonText(list));
    }

    std::vector<std::string> m_Typed;
    std::string m_Sensor;
    bool m_Note = false;
    unsigned int m_Timeout = 0;
    std::vector<lumo::Place> m_Places;
};

} // namespace

void addAnalyze(CommandSet& commands)
{
    commands.add<AnalyzeCommand>("analyze", "Have the centre analyse images");
}

} // namespace cli
