#include "catalog/RecordQueries.h"

using recordqueries::byProject;
using recordqueries::byType;
using recordqueries::single;

// Control files and points

ENUM_RET_TYPE CLumoDataMgr::getCtrlFile(unsigned int id, tagCtrlFileTable& record)
{
    CallFrame frame(*this, "getCtrlFile");
    recordqueries::DataUtilBeanReq request;
    request.set_dqcon_id(static_cast<int>(id));
    return single(frame, LUMO_LEDGER(queryDataSrcControlByDqConID), request, record);
}

ENUM_RET_TYPE CLumoDataMgr::getCtrlFileByTypeID(unsigned int typeId, QList<tagCtrlFileTable>& records)
{
    CallFrame frame(*this, "getCtrlFileByTypeID");
    return byType<tagCtrlFileTable>(frame, LUMO_LEDGER(queryDataSrcControlByTypeIDTotal),
                                    LUMO_LEDGER(queryDataSrcControlByTypeID), typeId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getCtrlFileByDataID(unsigned int dataId, QList<tagCtrlFileTable>& records)
{
    CallFrame frame(*this, "getCtrlFileByDataID");
    return byProject(frame, LUMO_LEDGER(queryDataSrcControlByProjectIDTotal),
                     LUMO_LEDGER(queryDataSrcControlByProjectID), dataId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getCtrlPoint(unsigned int id, tagCtrlPointTable& point)
{
    CallFrame frame(*this, "getCtrlPoint");
    return single(frame, LUMO_LEDGER(queryDataSrcControlInfoById), id, point);
}

ENUM_RET_TYPE CLumoDataMgr::getCtrlPoint(unsigned int dqConID, QList<tagCtrlPointTable>& points)
{
    CallFrame frame(*this, "getCtrlPoint");
    recordqueries::DataUtilBeanReq request;
    request.set_dqcon_id(static_cast<int>(dqConID));
    return frame.pages(LUMO_LEDGER(queryDataSrcControlInfoByDqConIDTotal),
                       LUMO_LEDGER(queryDataSrcControlInfoByDqConID), request, points,
                       recordqueries::appendTo<tagCtrlPointTable>(points));
}
