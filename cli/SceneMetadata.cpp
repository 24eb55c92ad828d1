#include "cli/Commands.h"

#include "cli/Connection.h"
#include "cli/DisplayText.h"
#include "cli/ExitCode.h"
#include "cli/Output.h"
#include "cli/Records.h"

#include "lumo/core/LumoDataMgr.h"

#include <algorithm>

namespace cli {

namespace {

Json listJson(const QStringList& texts)
{
    Json list = Json::array();
    for (const QString& text : texts)
        list.push_back(text.toStdString());
    return list;
}

/// What the centre answers, by keys; null when it failed.
Json sceneOf(Session& session, const std::string& format, unsigned int id)
{
    CLumoDataMgr& manager = session.manager;
    session.journal.forget();
    if (format == "spot5") {
        const QString name = manager.getSpot5FromMetadataDim(id);
        // A name that is empty and a failure differ in the log alone.
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
    return {
        {"name", name.toStdString()}, {"mainFiles", listJson(mainFiles)}, {"metaFiles", listJson(metaFiles)}};
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

} // namespace

Action showSceneMetadata(const std::string& format, const std::string& file)
{
    const bool number = !file.empty() && file.find_first_not_of("0123456789") == std::string::npos;
    const Place place = parsePlace(number ? "file:" + file : file);
    return [format, file, place, number](Session& session) {
        unsigned int id = place.id;
        if (!number) {
            const Found found = session.catalogue.find(place);
            if (found.kind != Place::Kind::File)
                refuse("'" + file + "' is no file");
            id = found.file.fileID;
        }
        const Json scene = sceneOf(session, format, id);
        if (scene.is_null())
            requestFailed(session.journal);
        print(session.json ? jsonText(scene) : sceneText(scene));
    };
}

} // namespace cli
