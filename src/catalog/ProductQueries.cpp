#include "catalog/RecordQueries.h"

using recordqueries::byProject;
using recordqueries::byProjectAndMark;
using recordqueries::byType;
using recordqueries::single;

// Digital elevation models

ENUM_RET_TYPE CLumoDataMgr::getDem(unsigned int id, tagDemTable& record)
{
    return single(CallFrame(*this, "getDem"), LEDGER(queryDataSrcDemById), id, record);
}

ENUM_RET_TYPE CLumoDataMgr::getDemByTypeID(unsigned int typeId, QList<tagDemTable>& records)
{
    return byType<tagDemTable>(CallFrame(*this, "getDemByTypeID"), LEDGER(queryDataSrcDemByTypeIDTotal),
                               LEDGER(queryDataSrcDemByTypeID), typeId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getDemByTypeID(unsigned int typeId, QList<tagImageData>& images)
{
    return byType<tagDemTable>(CallFrame(*this, "getDemByTypeID"), LEDGER(queryDataSrcDemByTypeIDTotal),
                               LEDGER(queryDataSrcDemByTypeID), typeId, images);
}

ENUM_RET_TYPE CLumoDataMgr::getDemByDataID(unsigned int dataId, QList<tagDemTable>& records)
{
    return byProject(CallFrame(*this, "getDemByDataID"), LEDGER(queryDataSrcDemByProjectIDTotal),
                     LEDGER(queryDataSrcDemByProjectID), dataId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getDemByDataAndMark(unsigned int dataId, unsigned int mark,
                                                QList<tagDemTable>& records)
{
    return byProjectAndMark(CallFrame(*this, "getDemByDataAndMark"),
                            LEDGER(queryDataSrcDemByProjectIDAndCommID), dataId, mark, records);
}

// Digital surface models

ENUM_RET_TYPE CLumoDataMgr::getDsm(unsigned int id, tagDsmTable& record)
{
    return single(CallFrame(*this, "getDsm"), LEDGER(queryDataSrcDsmById), id, record);
}

ENUM_RET_TYPE CLumoDataMgr::getDsmByTypeID(unsigned int typeId, QList<tagDsmTable>& records)
{
    return byType<tagDsmTable>(CallFrame(*this, "getDsmByTypeID"), LEDGER(queryDataSrcDsmByTypeIDTotal),
                               LEDGER(queryDataSrcDsmByTypeID), typeId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getDsmByTypeID(unsigned int typeId, QList<tagImageData>& images)
{
    return byType<tagDsmTable>(CallFrame(*this, "getDsmByTypeID"), LEDGER(queryDataSrcDsmByTypeIDTotal),
                               LEDGER(queryDataSrcDsmByTypeID), typeId, images);
}

ENUM_RET_TYPE CLumoDataMgr::getDsmByDataID(unsigned int dataId, QList<tagDsmTable>& records)
{
    return byProject(CallFrame(*this, "getDsmByDataID"), LEDGER(queryDataSrcDsmByProjectIDTotal),
                     LEDGER(queryDataSrcDsmByProjectID), dataId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getDsmByDataAndMark(unsigned int dataId, unsigned int mark,
                                                QList<tagDsmTable>& records)
{
    return byProjectAndMark(CallFrame(*this, "getDsmByDataAndMark"),
                            LEDGER(queryDataSrcDsmByProjectIDAndCommID), dataId, mark, records);
}

// Orthophotos

ENUM_RET_TYPE CLumoDataMgr::getDom(unsigned int id, tagDomTable& record)
{
    return single(CallFrame(*this, "getDom"), LEDGER(queryDataSrcDomById), id, record);
}

ENUM_RET_TYPE CLumoDataMgr::getDomByTypeID(unsigned int typeId, QList<tagDomTable>& records)
{
    return byType<tagDomTable>(CallFrame(*this, "getDomByTypeID"), LEDGER(queryDataSrcDomByTypeIDTotal),
                               LEDGER(queryDataSrcDomByTypeID), typeId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getDomByTypeID(unsigned int typeId, QList<tagImageData>& images)
{
    return byType<tagDomTable>(CallFrame(*this, "getDomByTypeID"), LEDGER(queryDataSrcDomByTypeIDTotal),
                               LEDGER(queryDataSrcDomByTypeID), typeId, images);
}

ENUM_RET_TYPE CLumoDataMgr::getDomByDataID(unsigned int dataId, QList<tagDomTable>& records)
{
    return byProject(CallFrame(*this, "getDomByDataID"), LEDGER(queryDataSrcDomByProjectIDTotal),
                     LEDGER(queryDataSrcDomByProjectID), dataId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getDomByDataAndMark(unsigned int dataId, unsigned int mark,
                                                QList<tagDomTable>& records)
{
    return byProjectAndMark(CallFrame(*this, "getDomByDataAndMark"),
                            LEDGER(queryDataSrcDomByProjectIDAndCommID), dataId, mark, records);
}

// Line maps

ENUM_RET_TYPE CLumoDataMgr::getDlg(unsigned int id, tagDlgTable& record)
{
    return single(CallFrame(*this, "getDlg"), LEDGER(queryDataSrcDlgById), id, record);
}

ENUM_RET_TYPE CLumoDataMgr::getDlgByTypeID(unsigned int typeId, QList<tagDlgTable>& records)
{
    return byType<tagDlgTable>(CallFrame(*this, "getDlgByTypeID"), LEDGER(queryDataSrcDlgByTypeIDTotal),
                               LEDGER(queryDataSrcDlgByTypeID), typeId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getDlgByTypeID(unsigned int typeId, QList<tagImageData>& images)
{
    return byType<tagDlgTable>(CallFrame(*this, "getDlgByTypeID"), LEDGER(queryDataSrcDlgByTypeIDTotal),
                               LEDGER(queryDataSrcDlgByTypeID), typeId, images);
}

ENUM_RET_TYPE CLumoDataMgr::getDlgByDataID(unsigned int dataId, QList<tagDlgTable>& records)
{
    return byProject(CallFrame(*this, "getDlgByDataID"), LEDGER(queryDataSrcDlgByProjectIDTotal),
                     LEDGER(queryDataSrcDlgByProjectID), dataId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getDlgByDataAndMark(unsigned int dataId, unsigned int mark,
                                                QList<tagDlgTable>& records)
{
    return byProjectAndMark(CallFrame(*this, "getDlgByDataAndMark"),
                            LEDGER(queryDataSrcDlgByProjectIDAndCommID), dataId, mark, records);
}
