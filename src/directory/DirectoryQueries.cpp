#include "core/CallFrame.h"
#include "lumo/core/LumoDataMgr.h"
#include "tavrel.pb.h"

// Company numbers and national areas

QString CLumoDataMgr::getCompanyNo(unsigned int companyID)
{
    CallFrame frame(*this, "getCompanyNo");
    ledgerserver::CompanyUtilBeanReq request;
    request.set_company_id(companyID);
    QString number;
    frame.ask(LUMO_LEDGER(queryCompanyTableByCompanyID), request, verdicts::found,
              [&](const ledgerserver::CompanyUtilBeanRsp& response) {
                  number = QString::fromStdString(response.bean().companyno());
              });
    return number;
}

ENUM_RET_TYPE CLumoDataMgr::getNationalArea(unsigned int areaID, QMap<unsigned int, QString>& areas)
{
    CallFrame frame(*this, "getNationalArea");
    ledgerserver::DataUtilBeanReq request;
    request.set_area_id(areaID);
    return frame.ask(LUMO_LEDGER(queryNationalAreaByAreaID), request, verdicts::found,
                     [&](const ledgerserver::NationalAreaUtilBeanRsp& response) {
                         for (const auto& area : response.nationalareas())
                             areas.insert(area.area_id(), QString::fromStdString(area.area_name()));
                     });
}

// Storage boxes

bool CLumoDataMgr::getKestaList(QMap<QString, QString>& boxes)
{
    CallFrame frame(*this, "getKestaList");
    Tavrel::GetKestaListReq request;
    request.set_commoncode(m_CompanyNo.toUtf8().constData());
    return frame.ask(LUMO_TAVREL(getKestaList), request, verdicts::statusZero,
                     [&](const Tavrel::GetKestaListRsp& response) {
                         for (const auto& element : response.boxlist())
                             boxes.insert(QString::fromStdString(element.box().box_key()),
                                          QString::fromStdString(element.box().box_value()));
                     });
}

QString CLumoDataMgr::getKestaIP(const QString& code)
{
    CallFrame frame(*this, "getKestaIP");
    Tavrel::CommonCodeSingleReq request;
    request.set_code(code.toUtf8().constData());
    QString address;
    frame.ask(LUMO_TAVREL(getKestaInfo), request, verdicts::statusZero,
              [&](const Tavrel::GetKestaInfoRsp& response) {
                  address = QString::fromStdString(response.info().address());
              });
    return address;
}
