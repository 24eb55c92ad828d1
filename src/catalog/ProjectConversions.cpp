#include "catalog/CoordRules.h"
#include "catalog/FieldRules.h"
#include "ledger_projects.pb.h"
#include "lumo/core/LumoDataMgr.h"

using fieldrules::coordSetting;
using fieldrules::key;
using fieldrules::text;
using fieldrules::textWithin;
using ledgerserver::DataSrcBean;
using ledgerserver::DataSrcTypeBean;

void CLumoDataMgr::getDataFromBean(const DataSrcBean& bean, tagDataTable& data)
{
    key(data.projectID, LUMO_FIELD(project_id));
    key(data.companyID, LUMO_FIELD(company_id));
    text(data.projectName, LUMO_FIELD(project_name));
    text(data.text1, LUMO_FIELD(text1));
    text(data.text2, LUMO_FIELD(text2));
    text(data.text3, LUMO_FIELD(text3));
    text(data.text4, LUMO_FIELD(text4));
    text(data.text5, LUMO_FIELD(text5));
    text(data.text6, LUMO_FIELD(text6));
    text(data.text7, LUMO_FIELD(text7));
    text(data.text8, LUMO_FIELD(text8));
    coordSetting(data.coord, bean);
}

void CLumoDataMgr::getDataTypeFromBean(const DataSrcTypeBean& bean, tagTypeTable& type)
{
    key(type.typeID, LUMO_FIELD(type_id));
    key(type.projectID, LUMO_FIELD(project_id));
    text(type.dataType, LUMO_FIELD(data_type));
    textWithin<64>(type.projectName, LUMO_FIELD(project_name));
    text(type.typeText, LUMO_FIELD(type_text));
}
