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
    key(file.dqConID, FIELD(dq_con_id));
    key(file.mainFileID, FIELD(main_file_id));
    text(file.ctrlFileName, FIELD(ctrl_file_name));
    text(file.text1, FIELD(text1));
    text(file.text2, FIELD(text2));
    text(file.text3, FIELD(text3));
    text(file.text4, FIELD(text4));
    text(file.text5, FIELD(text5));
    text(file.text6, FIELD(text6));
    text(file.text7, FIELD(text7));
    text(file.text8, FIELD(text8));
    text(file.text9, FIELD(text9));
    PresenceBits bits(file.presence);
    bits.number(file.value1, FIELD(value1));
    coordSetting(file.coord, bean);
}

void CLumoDataMgr::getCtrlPointDataFromBean(const DataSrcControlInfoBean& bean, tagCtrlPointTable& point,
                                            const tagCtrlFileTable* ctrlFile)
{
    point.ctrlFile = ctrlFile;
    key(point.pointID, FIELD(point_id));
    key(point.dqConID, FIELD(dq_con_id));
    text(point.conNumber, FIELD(con_number));
    text(point.pointText, FIELD(point_text));
    PresenceBits bits(point.presence);
    bits.number(point.pointX, FIELD(point_x));
    bits.number(point.pointY, FIELD(point_y));
    bits.number(point.pointZ, FIELD(point_z));
}
