#include "core/CallFrame.h"
#include "core/TextLists.h"
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
        appendTexts(mainFiles, response.main_file());
        appendTexts(metaFiles, response.meta_file());
        name = QString::fromStdString(response.sat_name());
    };
}

} // namespace

// Metadata of scenes

QString CLumoDataMgr::getSpot5FromMetadataDim(unsigned int id)
{
    QString name;
    CallFrame(*this, "getSpot5FromMetadataDim")
        .confirmed(
            FORGE(Spot5FromDim), scene(id), &AnalyzeSatRsp::sat_result,
            [&](const AnalyzeSatRsp& response) { name = QString::fromStdString(response.sat_name()); });
    return name;
}

bool CLumoDataMgr::getSpot6FromDim(unsigned int id, QString& name, QStringList& mainFiles,
                                   QStringList& metaFiles)
{
    return CallFrame(*this, "getSpot6FromDim")
        .confirmed(FORGE(Spot6FromDim), scene(id), &AnalyzeSatRsp::sat_result,
                   into(name, mainFiles, metaFiles));
}

bool CLumoDataMgr::getAlosFromSummary(unsigned int id, QString& name, QStringList& mainFiles,
                                      QStringList& metaFiles)
{
    return CallFrame(*this, "getAlosFromSummary")
        .confirmed(FORGE(AlosFromSummary), scene(id), &AnalyzeSatRsp::sat_result,
                   into(name, mainFiles, metaFiles));
}

bool CLumoDataMgr::getAdsFromSup(unsigned int id, QString& text1, QString& text2, QString& text3,
                                 QString& text4, QString& text5, QString& text6)
{
    CallFrame frame(*this, "getAdsFromSup");
    AnalyzeAdsReq request;
    request.set_image_id(id);
    return frame.confirmed(FORGE(AdsFromSup), request, &AnalyzeAdsRsp::ads_result,
                           [&](const AnalyzeAdsRsp& response) {
                               text1 = QString::fromStdString(response.ads_text1());
                               text2 = QString::fromStdString(response.ads_text2());
                               text3 = QString::fromStdString(response.ads_text3());
                               text4 = QString::fromStdString(response.ads_text4());
                               text5 = QString::fromStdString(response.ads_text5());
                               text6 = QString::fromStdString(response.ads_text6());
                           });
}
