#include "core/CallFrame.h"
#include "lumo/core/LumoDataMgr.h"
#include "lumo/core/TextEncoding.h"

using ledgerserver::VersionBeanReq;
using ledgerserver::VersionBeanRsp;

namespace {

/// Takes the record of an answer into `info`.
auto into(tagVersionInfo& info, void (*convert)(const ledgerserver::VersionTableBean&, tagVersionInfo&))
{
    return [&info, convert](const VersionBeanRsp& response) { convert(response.bean(), info); };
}

/// Takes the path of an answer into `path`.
auto into(QString& path)
{
    return [&path](const VersionBeanRsp& response) {
        path = QString::fromStdString(response.bean().app_full_path());
    };
}

} // namespace

// Versions

bool CLumoDataMgr::getVersionBySoftID(const char* softID, const char* versionNo, tagVersionInfo& info)
{
    CallFrame frame(*this, "getVersionBySoftID");
    VersionBeanReq request;
    request.set_programno(convertToUtf8(std::string(softID)));
    request.set_versionno(convertToUtf8(std::string(versionNo)));
    return frame.ask(LUMO_LEDGER(queryVersionByVersionNoAndProgramNo), request, verdicts::zero,
                     into(info, &CLumoDataMgr::getVersionInfoFromBean));
}

bool CLumoDataMgr::getVersionByAppID(const char* appID, const char* versionNo, tagVersionInfo& info)
{
    CallFrame frame(*this, "getVersionByAppID");
    VersionBeanReq request;
    request.set_moduleno(convertToUtf8(std::string(appID)));
    request.set_versionno(convertToUtf8(std::string(versionNo)));
    return frame.ask(LUMO_LEDGER(queryVersionByVersionNoAndModuleNo), request, verdicts::zero,
                     into(info, &CLumoDataMgr::getVersionInfoFromBean));
}

bool CLumoDataMgr::getLatestVersionBySoftID(const char* softID, tagVersionInfo& info)
{
    CallFrame frame(*this, "getLatestVersionBySoftID");
    VersionBeanReq request;
    request.set_programno(convertToUtf8(std::string(softID)));
    return frame.ask(LUMO_LEDGER(checkNewVersion), request, verdicts::zero,
                     into(info, &CLumoDataMgr::getVersionInfoFromBean));
}

bool CLumoDataMgr::getLatestVersionByAppID(const char* appID, tagVersionInfo& info)
{
    CallFrame frame(*this, "getLatestVersionByAppID");
    VersionBeanReq request;
    request.set_moduleno(convertToUtf8(std::string(appID)));
    return frame.ask(LUMO_LEDGER(checkNewVersionByModuleNo), request, verdicts::zero,
                     into(info, &CLumoDataMgr::getVersionInfoFromBean));
}

QString CLumoDataMgr::getAppFullPathBySoftID(const QString& softID, const QString& versionNo)
{
    CallFrame frame(*this, "getAppFullPathBySoftID");
    VersionBeanReq request;
    request.set_programno(softID.toUtf8().constData());
    request.set_versionno(versionNo.toUtf8().constData());
    QString path;
    frame.ask(LUMO_LEDGER(queryVersionByVersionNoAndProgramNo), request, verdicts::zero, into(path));
    return path;
}

QString CLumoDataMgr::getAppFullPathByAppID(const QString& appID, const QString& versionNo)
{
    CallFrame frame(*this, "getAppFullPathByAppID");
    VersionBeanReq request;
    request.set_moduleno(appID.toUtf8().constData());
    request.set_versionno(versionNo.toUtf8().constData());
    QString path;
    frame.ask(LUMO_LEDGER(queryVersionByVersionNoAndModuleNo), request, verdicts::zero, into(path));
    return path;
}

void CLumoDataMgr::getVersionInfoFromBean(const ledgerserver::VersionTableBean& bean, tagVersionInfo& info)
{
    const auto take = [](std::string& text, bool present, const std::string& value) {
        if (present)
            text = convertToMultibyte(value);
    };
    take(info.text1, bean.has_version_text_1(), bean.version_text_1());
    take(info.text2, bean.has_version_text_2(), bean.version_text_2());
    take(info.text3, bean.has_version_text_4(), bean.version_text_4());
    take(info.text4, bean.has_version_text_5(), bean.version_text_5());
    take(info.text5, bean.has_version_text_6(), bean.version_text_6());
}
