#include "cli/Connection.h"
#include "cli/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Records.h"

#include "lumo/core/LumoDataMgr.h"

namespace cli {

namespace {

Json textsJson(const QStringList& texts)
{
    Json list = Json::array();
    for (const QString& text : texts)
        list.push_back(text.toStdString());
    return list;
}

/// The answer of the centre by keys; null when it failed.
Json sceneOf(Session& session, const std::string& format, unsigned int id)
{
    CLumoDataMgr& manager = session.manager;
    session.journal.forget();
    if (format == "spot5") {
        const QString name = manager.getSpot5FromMetadataDim(id);
        // Only the log tells an empty name from a failure.
        const bool failed = name.isEmpty() && session.journal.lastReason().kind != Reason::Kind::None;
        return failed ? Json() : Json{{"name", name.toStdString()}};
    }
    if (format == "ads") {
        QString texts[6];
        if (!manager.getAdsFromSup(id, texts[0], texts[1], texts[2], texts[3], texts[4], texts[5]))
            return {};
        Json scene;
        for (int i = 0; i < 6; ++i)
            scene["text" + std::to_string(i + 1)] = texts[i].toStdString();
        return scene;
    }
    QString name;
    QStringList mainFiles;
    QStringList metaFiles;
    const auto get = format == "spot6" ? &CLumoDataMgr::getSpot6FromDim : &CLumoDataMgr::getAlosFromSummary;
    if (!(manager.*get)(id, name, mainFiles, metaFiles))
        return {};
    return {{"name", name.toStdString()},
            {"mainFiles", textsJson(mainFiles)},
            {"metaFiles", textsJson(metaFiles)}};
}

std::string sceneText(const Json& scene)
{
    Table table({"", ""});
    for (const auto& [key, value] : scene.items()) {
        if (value.is_string()) {
            table.add({key, shownText(value.get<std::string>())});
            continue;
        }
        std::string heading = key;
        for (const Json& text : value) {
            table.add({heading, shownText(text.get<std::string>())});
            heading.clear();
        }
    }
    return table.text();
}

class MetadataCommand : public Command
{
public:
    explicit MetadataCommand(CLI::App& app)
    {
        app.add_option("FORMAT", m_Format, "spot5, spot6, alos or ads")
            ->option_text(" ")
            ->required()
            ->check(CLI::IsMember({"spot5", "spot6", "alos", "ads"}));
        addArgument(app, "ID", m_File, "The metadata file: its identifier, or its place");
        explain(app, kPlaceHelp);
    }

    void check(Options& /*options*/) override
    {
        const bool number = !m_File.empty() && m_File.find_first_not_of("0123456789") == std::string::npos;
        m_Place = parsePlace(number ? "file:" + m_File : m_File);
        m_LooksUp = !number;
    }

    void run(Session& session) override
    {
        unsigned int id = m_Place.id;
        if (m_LooksUp) {
            const Found found = session.catalogue.find(m_Place);
            if (found.kind != Place::Kind::File)
                refuse("'" + m_File + "' is not a file");
            id = found.file.fileID;
        }
        const Json scene = sceneOf(session, m_Format, id);
        if (scene.is_null())
            requestFailed(session.journal);
        print(session.json ? jsonText(scene) : sceneText(scene));
    }

private:
    std::string m_Format;
    std::string m_File;
    Place m_Place;
    bool m_LooksUp = false; ///< false: a bare identifier, which the centre itself looks up
};

} // namespace

void addMetadata(CommandSet& commands)
{
    commands.add<MetadataCommand>("metadata", "Show the contents of the metadata file of a scene");
}

} // namespace cli
