#include "cli/base/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Records.h"

namespace cli {

namespace {

bool isList(const std::string& key)
{
    return key == "mainFiles" || key == "metaFiles";
}

Json sceneJson(const lumo::Centre::Scene& scene)
{
    Json json = Json::object();
    for (const auto& [key, texts] : scene)
        json[key] = isList(key) ? Json(texts) : Json(texts.front());
    return json;
}

std::string sceneText(const lumo::Centre::Scene& scene)
{
    Table table({"", ""});
    for (const auto& [key, texts] : scene) {
        std::string heading = key;
        for (const std::string& text : texts) {
            table.add({heading, shownText(text)});
            heading.clear();
        }
    }
    return table.text();
}

std::string knownFormat(const std::string& name)
{
    const bool known = name == "spot5" || name == "spot6" || name == "alos" || name == "ads";
    return known ? "" : "'" + name + "' is none of spot5, spot6, alos and ads";
}

class MetadataCommand : public Command
{
public:
    explicit MetadataCommand(CLI::App& app)
    {
        addArgument(app, "FORMAT", m_Format, "spot5, spot6, alos or ads")->check(knownFormat);
        addArgument(app, "ID", m_File, "The metadata file: its identifier, or its place");
        explain(app, kPlaceHelp);
    }

    void check(Options& /*options*/) override
    {
        m_IsNumber = !m_File.empty() && m_File.find_first_not_of("0123456789") == std::string::npos;
        m_Place = lumo::Place(m_IsNumber ? "file:" + m_File : m_File);
    }

    void run(lumo::Session& session, bool json) override
    {
        // The centre itself looks up a bare number.
        lumo::FileId id(m_Place.number());
        if (!m_IsNumber)
            id = findFile(session.catalogue(), m_Place, m_File).file;
        const lumo::Centre::Scene scene = session.centre().scene(m_Format, id);
        print(json ? jsonText(sceneJson(scene)) : sceneText(scene));
    }

private:
    std::string m_Format;
    std::string m_File;
    bool m_IsNumber = false;
    lumo::Place m_Place = "/";
};

} // namespace

void addMetadata(CommandSet& commands)
{
    commands.add<MetadataCommand>("metadata", "Show the contents of the metadata file of a scene");
}

} // namespace cli
