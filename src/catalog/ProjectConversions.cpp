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
    key(data.projectID, FIELD(project_id));
    key(data.companyID, FIELD(company_id));
    text(data.projectName, FIELD(project_name));
    text(data.text1, FIELD(text1));
    text(data.text2, FIELD(text2));
    text(data.text3, FIELD(text3));
    text(data.text4, FIELD(text4));
    text(data.text5, FIELD(text5));
    text(data.text6, FIELD(text6));
    text(data.text7, FIELD(text7));
    text(data.text8, FIELD(text8));
    coordSetting(data.coord, bean);
}

void CLumoDataMgr::getDataTypeFromBean(const DataSrcTypeBean& bean, tagTypeTable& type)
{
    key(type.typeID, FIELD(type_id));
    key(type.projectID, FIELD(project_id));
    text(type.dataType, FIELD(data_type));
    textWithin<64>(type.projectName, FIELD(project_name));
    text(type.typeText, FIELD(type_text));
}
