#include "catalog/CoordRules.h"
#include "catalog/FieldRules.h"
#include "ledger_control.pb.h"
#include "lumo/core/LumoDataMgr.h"

using fieldrules::coordSetting;
using fieldrules::key;
using fieldrules::PresenceBits;
using fieldrules::text;
using ledgerserver::DataSrcControlBean;
using ledgerserver::DataSrcControlInfoBean;

void CLumoDataMgr::getCtrlFileDataFromBean(const DataSrcControlBean& bean, tagCtrlFileTable& file)
{
    key(file.dqConID, LUMO_FIELD(dq_con_id));
    key(file.mainFileID, LUMO_FIELD(main_file_id));
    text(file.ctrlFileName, LUMO_FIELD(ctrl_file_name));
    text(file.text1, LUMO_FIELD(text1));
    text(file.text2, LUMO_FIELD(text2));
    text(file.text3, LUMO_FIELD(text3));
    text(file.text4, LUMO_FIELD(text4));
    text(file.text5, LUMO_FIELD(text5));
    text(file.text6, LUMO_FIELD(text6));
    text(file.text7, LUMO_FIELD(text7));
    text(file.text8, LUMO_FIELD(text8));
    text(file.text9, LUMO_FIELD(text9));
    PresenceBits bits(file.presence);
    bits.number(file.value1, LUMO_FIELD(value1));
    coordSetting(file.coord, bean);
}

void CLumoDataMgr::getCtrlPointDataFromBean(const DataSrcControlInfoBean& bean, tagCtrlPointTable& point,
                                            const tagCtrlFileTable* ctrlFile)
{
    point.ctrlFile = ctrlFile;
    key(point.pointID, LUMO_FIELD(point_id));
    key(point.dqConID, LUMO_FIELD(dq_con_id));
    text(point.conNumber, LUMO_FIELD(con_number));
    text(point.pointText, LUMO_FIELD(point_text));
    PresenceBits bits(point.presence);
    bits.number(point.pointX, LUMO_FIELD(point_x));
    bits.number(point.pointY, LUMO_FIELD(point_y));
    bits.number(point.pointZ, LUMO_FIELD(point_z));
}
