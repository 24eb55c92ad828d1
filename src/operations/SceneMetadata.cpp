#include "core/CallFrame.h"
#include "core/Readers.h"
#include "forgeserver.pb.h"
#include "lumo/core/LumoDataMgr.h"

using forgeserver::AnalyzeAdsReq;
using forgeserver::AnalyzeAdsRsp;
using forgeserver::AnalyzeSatReq;
using forgeserver::AnalyzeSatRsp;

namespace {

AnalyzeSatReq scene(unsigned int id)
{
    AnalyzeSatReq request;
    request.set_image_id(id);
    return request;
}

/// Takes a scene with its files.
auto into(QString& name, QStringList& mainFiles, QStringList& metaFiles)
{
    return [&](const AnalyzeSatRsp& response) {
        readers::appendTexts(mainFiles, response.main_file());
        readers::appendTexts(metaFiles, response.meta_file());
        name = QString::fromStdString(response.sat_name());
    };
}

} // namespace

// Metadata of scenes

QString CLumoDataMgr::getSpot5FromMetadataDim(unsigned int id)
{
    CallFrame frame(*this, "getSpot5FromMetadataDim");
    QString name;
    frame.ask(LUMO_FORGE(Spot5FromDim), scene(id), verdicts::Flag{&AnalyzeSatRsp::sat_result},
              [&](const AnalyzeSatRsp& response) { name = QString::fromStdString(response.sat_name()); });
    return name;
}

bool CLumoDataMgr::getSpot6FromDim(unsigned int id, QString& name, QStringList& mainFiles,
                                   QStringList& metaFiles)
{
    CallFrame frame(*this, "getSpot6FromDim");
    return frame.ask(LUMO_FORGE(Spot6FromDim), scene(id), verdicts::Flag{&AnalyzeSatRsp::sat_result},
                     into(name, mainFiles, metaFiles));
}

bool CLumoDataMgr::getAlosFromSummary(unsigned int id, QString& name, QStringList& mainFiles,
                                      QStringList& metaFiles)
{
    CallFrame frame(*this, "getAlosFromSummary");
    return frame.ask(LUMO_FORGE(AlosFromSummary), scene(id), verdicts::Flag{&AnalyzeSatRsp::sat_result},
                     into(name, mainFiles, metaFiles));
}

bool CLumoDataMgr::getAdsFromSup(unsigned int id, QString& text1, QString& text2, QString& text3,
                                 QString& text4, QString& text5, QString& text6)
{
    CallFrame frame(*this, "getAdsFromSup");
    AnalyzeAdsReq request;
    request.set_image_id(id);
    return frame.ask(LUMO_FORGE(AdsFromSup), request, verdicts::Flag{&AnalyzeAdsRsp::ads_result},
                     [&](const AnalyzeAdsRsp& response) {
                         text1 = QString::fromStdString(response.ads_text1());
                         text2 = QString::fromStdString(response.ads_text2());
                         text3 = QString::fromStdString(response.ads_text3());
                         text4 = QString::fromStdString(response.ads_text4());
                         text5 = QString::fromStdString(response.ads_text5());
                         text6 = QString::fromStdString(response.ads_text6());
                     });
}
