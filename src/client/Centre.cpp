#include "lumo/client/Centre.h"

#include "client/Link.h"
#include "client/TextList.h"
#include "lumo/core/LumoDataMgr.h"
#include "lumo/core/TextEncoding.h"

namespace lumo {

using internal::Call;
using internal::notFound;
using internal::Reason;

namespace {

Centre::Scene sceneOf(const Call& call,
                      bool (CLumoDataMgr::*read)(unsigned int, QString&, QStringList&, QStringList&),
                      FileId file)
{
    QString name;
    QStringList mainFiles;
    QStringList metaFiles;
    call.require((call.manager().*read)(file.number(), name, mainFiles, metaFiles));
    return {{"name", {name.toStdString()}},
            {"mainFiles", internal::textsOf(mainFiles)},
            {"metaFiles", internal::textsOf(metaFiles)}};
}

Centre::Scene adsSceneOf(const Call& call, FileId file)
{
    QString texts[6];
    call.require(
        call->getAdsFromSup(file.number(), texts[0], texts[1], texts[2], texts[3], texts[4], texts[5]));
    Centre::Scene scene;
    for (std::size_t i = 0; i < std::size(texts); ++i)
        scene.push_back({"text" + std::to_string(i + 1), {texts[i].toStdString()}});
    return scene;
}

} // namespace

Centre::Centre(std::shared_ptr<internal::Link> link) : m_Link(std::move(link))
{
}

std::string Centre::user() const
{
    return Call(*m_Link)->roleName().toStdString();
}

CompanyId Centre::company() const
{
    return CompanyId(Call(*m_Link)->companyID());
}

std::string Centre::companyNumber() const
{
    const Call call(*m_Link);
    std::string number = call->getCompanyNo(call->companyID()).toStdString();
    // An empty number and a failure differ in the log alone.
    call.require(!number.empty() || Call::reason().kind == Reason::Kind::None);
    return number;
}

std::map<std::string, std::string> Centre::boxes() const
{
    const Call call(*m_Link);
    QMap<QString, QString> known;
    call.require(call->getKestaList(known));
    std::map<std::string, std::string> boxes;
    for (auto box = known.cbegin(); box != known.cend(); ++box)
        boxes.emplace(box.key().toStdString(), box.value().toStdString());
    return boxes;
}

std::map<AreaId, std::string> Centre::areas(AreaId area) const
{
    const Call call(*m_Link);
    QMap<unsigned int, QString> known;
    if (!call.answered(call->getNationalArea(area.number(), known)))
        notFound("the centre knows no area " + std::to_string(area.number()));
    std::map<AreaId, std::string> areas;
    for (auto one = known.cbegin(); one != known.cend(); ++one)
        areas.emplace(AreaId(one.key()), one.value().toStdString());
    return areas;
}

Centre::Version Centre::version(const Product& product, const std::string& number) const
{
    const Call call(*m_Link);
    const std::string productText = convertToMultibyte(product.number);
    const std::string versionText = convertToMultibyte(number);
    const char* const text = productText.c_str();
    const bool program = product.kind == Product::Kind::Program;
    tagVersionInfo info;
    const bool known = number.empty() ? (program ? call->getLatestVersionBySoftID(text, info)
                                                 : call->getLatestVersionByAppID(text, info))
                       : program      ? call->getVersionBySoftID(text, versionText.c_str(), info)
                                      : call->getVersionByAppID(text, versionText.c_str(), info);
    if (!known && Call::reason().kind == Reason::Kind::CallFailed)
        call.fail();
    if (!known) {
        notFound("the centre knows no version " + (number.empty() ? "" : number + " ") +
                 (program ? "of program " : "of module ") + product.number);
    }
    return {convertToUtf8(info.text1), convertToUtf8(info.text2), convertToUtf8(info.text3),
            convertToUtf8(info.text4), convertToUtf8(info.text5)};
}

Centre::Scene Centre::scene(const std::string& format, FileId file) const
{
    const Call call(*m_Link);
    if (format == "spot6")
        return sceneOf(call, &CLumoDataMgr::getSpot6FromDim, file);
    if (format == "alos")
        return sceneOf(call, &CLumoDataMgr::getAlosFromSummary, file);
    if (format == "ads")
        return adsSceneOf(call, file);
    if (format != "spot5")
        internal::refuse("'" + format + "' is not a format of scenes: they are spot5, spot6, alos and ads");
    const std::string name = call->getSpot5FromMetadataDim(file.number()).toStdString();
    // An empty name and a failure differ in the log alone.
    call.require(!name.empty() || Call::reason().kind == Reason::Kind::None);
    return {{"name", {name}}};
}

} // namespace lumo
