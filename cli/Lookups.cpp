#include "cli/Commands.h"

#include "cli/Connection.h"
#include "cli/DisplayText.h"
#include "cli/ExitCode.h"
#include "cli/Records.h"

#include "lumo/core/LumoDataMgr.h"
#include "lumo/core/TextEncoding.h"

namespace cli {

std::string shownVersion(const Product& product, const std::string& version)
{
    return (product.kind == Product::Kind::Program ? "program " : "module ") + product.number +
           (version.empty() ? "" : " " + version);
}

tagVersionInfo versionInfo(Session& session, const Product& product, const std::string& version)
{
    CLumoDataMgr& manager = session.manager;
    const std::string numberText = convertToMultibyte(product.number);
    const std::string versionText = convertToMultibyte(version);
    const char* const number = numberText.c_str();
    const bool program = product.kind == Product::Kind::Program;
    tagVersionInfo info;
    const bool known = version.empty() ? (program ? manager.getLatestVersionBySoftID(number, info)
                                                  : manager.getLatestVersionByAppID(number, info))
                       : program       ? manager.getVersionBySoftID(number, versionText.c_str(), info)
                                       : manager.getVersionByAppID(number, versionText.c_str(), info);
    if (known)
        return info;
    if (session.journal.lastReason().kind == Reason::Kind::CallFailed)
        requestFailed(session.journal);
    throw Failure(ExitCode::PlaceNotFound, "the centre knows no " +
                                               (version.empty() ? "version of " : std::string()) +
                                               shownVersion(product, version));
}

void showVersion(Session& session, const Product& product, const std::string& version)
{
    const tagVersionInfo info = versionInfo(session, product, version);
    const struct
    {
        const char* key;
        const char* heading;
        const std::string& text;
    } kTexts[] = {{"text1", "Name", info.text1},
                  {"text2", "Version", info.text2},
                  {"text3", "Released", info.text3},
                  {"text4", "Storage box", info.text4},
                  {"text5", "Notes", info.text5}};
    Json record;
    Table table({"", ""});
    for (const auto& one : kTexts) {
        const std::string text = convertToUtf8(one.text);
        record[one.key] = text;
        table.add({one.heading, shownText(text)});
    }
    print(session.json ? jsonText(record) : table.text());
}

void showCaller(Session& session)
{
    const unsigned int companyID = session.manager.companyID();
    session.journal.forget();
    const std::string companyNo = session.manager.getCompanyNo(companyID).toStdString();
    if (companyNo.empty() && session.journal.lastReason().kind != Reason::Kind::None)
        requestFailed(session.journal);
    const std::string user = session.manager.roleName().toStdString();
    Table table({"", ""});
    table.add({"User", shownText(user)});
    table.add({"Company", shownText(companyNo)});
    table.add({"Identifier", std::to_string(companyID)});
    print(session.json ? jsonText({{"user", user}, {"companyNo", companyNo}, {"companyID", companyID}})
                       : table.text());
}

void listBoxes(Session& session)
{
    QMap<QString, QString> boxes;
    if (!session.manager.getKestaList(boxes))
        requestFailed(session.journal);
    Json list = Json::array();
    Table table({"BOX", "ADDRESS"});
    for (auto box = boxes.cbegin(); box != boxes.cend(); ++box) {
        const std::string code = box.key().toStdString();
        const std::string address = box.value().toStdString();
        list.push_back({{"code", code}, {"address", address}});
        table.add({code, shownText(address)});
    }
    print(session.json      ? jsonText(list)
          : boxes.isEmpty() ? "(the company has no storage boxes)\n"
                            : table.text(listWidth()));
}

void listAreas(Session& session, unsigned int areaID)
{
    QMap<unsigned int, QString> areas;
    const ENUM_RET_TYPE result = session.manager.getNationalArea(areaID, areas);
    if (result == RET_FAILED)
        requestFailed(session.journal);
    if (result == RET_NULL)
        throw Failure(ExitCode::PlaceNotFound, "the centre knows no area " + std::to_string(areaID));
    Json list = Json::array();
    Table table({"AREA", "NAME"});
    for (auto area = areas.cbegin(); area != areas.cend(); ++area) {
        const std::string name = area.value().toStdString();
        list.push_back({{"areaID", area.key()}, {"areaName", name}});
        table.add({std::to_string(area.key()), shownText(name)});
    }
    print(session.json ? jsonText(list) : areas.isEmpty() ? "(no areas)\n" : table.text(listWidth()));
}

} // namespace cli
