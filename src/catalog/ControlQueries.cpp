#include "catalog/RecordQueries.h"

using recordqueries::byProject;
using recordqueries::byType;
using recordqueries::single;

// Control files and points

ENUM_RET_TYPE CLumoDataMgr::getCtrlFile(unsigned int id, tagCtrlFileTable& record)
{
    recordqueries::DataUtilBeanReq request;
    request.set_dqcon_id(static_cast<int>(id));
    return single(CallFrame(*this, "getCtrlFile"), LEDGER(queryDataSrcControlByDqConID), request, record);
}

ENUM_RET_TYPE CLumoDataMgr::getCtrlFileByTypeID(unsigned int typeId, QList<tagCtrlFileTable>& records)
{
    return byType<tagCtrlFileTable>(CallFrame(*this, "getCtrlFileByTypeID"),
                                    LEDGER(queryDataSrcControlByTypeIDTotal),
                                    LEDGER(queryDataSrcControlByTypeID), typeId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getCtrlFileByDataID(unsigned int dataId, QList<tagCtrlFileTable>& records)
{
    return byProject(CallFrame(*this, "getCtrlFileByDataID"), LEDGER(queryDataSrcControlByProjectIDTotal),
                     LEDGER(queryDataSrcControlByProjectID), dataId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getCtrlPoint(unsigned int id, tagCtrlPointTable& point)
{
    return single(CallFrame(*this, "getCtrlPoint"), LEDGER(queryDataSrcControlInfoById), id, point);
}

ENUM_RET_TYPE CLumoDataMgr::getCtrlPoint(unsigned int dqConID, QList<tagCtrlPointTable>& points)
{
    CallFrame frame(*this, "getCtrlPoint");
    recordqueries::DataUtilBeanReq request;
    request.set_dqcon_id(static_cast<int>(dqConID));
    return frame.pages(LEDGER(queryDataSrcControlInfoByDqConIDTotal),
                       LEDGER(queryDataSrcControlInfoByDqConID), request,
                       recordqueries::appendTo<tagCtrlPointTable>(points), points);
}
