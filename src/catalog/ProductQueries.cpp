#include "catalog/RecordQueries.h"

using recordqueries::byProject;
using recordqueries::byProjectAndMark;
using recordqueries::byType;
using recordqueries::single;

// Digital elevation models

ENUM_RET_TYPE CLumoDataMgr::getDem(unsigned int id, tagDemTable& record)
{
    CallFrame frame(*this, "getDem");
    return single(frame, LUMO_LEDGER(queryDataSrcDemById), id, record);
}

ENUM_RET_TYPE CLumoDataMgr::getDemByTypeID(unsigned int typeId, QList<tagDemTable>& records)
{
    CallFrame frame(*this, "getDemByTypeID");
    return byType<tagDemTable>(frame, LUMO_LEDGER(queryDataSrcDemByTypeIDTotal),
                               LUMO_LEDGER(queryDataSrcDemByTypeID), typeId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getDemByTypeID(unsigned int typeId, QList<tagImageData>& images)
{
    CallFrame frame(*this, "getDemByTypeID");
    return byType<tagDemTable>(frame, LUMO_LEDGER(queryDataSrcDemByTypeIDTotal),
                               LUMO_LEDGER(queryDataSrcDemByTypeID), typeId, images);
}

ENUM_RET_TYPE CLumoDataMgr::getDemByDataID(unsigned int dataId, QList<tagDemTable>& records)
{
    CallFrame frame(*this, "getDemByDataID");
    return byProject(frame, LUMO_LEDGER(queryDataSrcDemByProjectIDTotal),
                     LUMO_LEDGER(queryDataSrcDemByProjectID), dataId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getDemByDataAndMark(unsigned int dataId, unsigned int mark,
                                                QList<tagDemTable>& records)
{
    CallFrame frame(*this, "getDemByDataAndMark");
    return byProjectAndMark(frame, LUMO_LEDGER(queryDataSrcDemByProjectIDAndCommID), dataId, mark, records);
}

// Digital surface models

ENUM_RET_TYPE CLumoDataMgr::getDsm(unsigned int id, tagDsmTable& record)
{
    CallFrame frame(*this, "getDsm");
    return single(frame, LUMO_LEDGER(queryDataSrcDsmById), id, record);
}

ENUM_RET_TYPE CLumoDataMgr::getDsmByTypeID(unsigned int typeId, QList<tagDsmTable>& records)
{
    CallFrame frame(*this, "getDsmByTypeID");
    return byType<tagDsmTable>(frame, LUMO_LEDGER(queryDataSrcDsmByTypeIDTotal),
                               LUMO_LEDGER(queryDataSrcDsmByTypeID), typeId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getDsmByTypeID(unsigned int typeId, QList<tagImageData>& images)
{
    CallFrame frame(*this, "getDsmByTypeID");
    return byType<tagDsmTable>(frame, LUMO_LEDGER(queryDataSrcDsmByTypeIDTotal),
                               LUMO_LEDGER(queryDataSrcDsmByTypeID), typeId, images);
}

ENUM_RET_TYPE CLumoDataMgr::getDsmByDataID(unsigned int dataId, QList<tagDsmTable>& records)
{
    CallFrame frame(*this, "getDsmByDataID");
    return byProject(frame, LUMO_LEDGER(queryDataSrcDsmByProjectIDTotal),
                     LUMO_LEDGER(queryDataSrcDsmByProjectID), dataId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getDsmByDataAndMark(unsigned int dataId, unsigned int mark,
                                                QList<tagDsmTable>& records)
{
    CallFrame frame(*this, "getDsmByDataAndMark");
    return byProjectAndMark(frame, LUMO_LEDGER(queryDataSrcDsmByProjectIDAndCommID), dataId, mark, records);
}

// Orthophotos

ENUM_RET_TYPE CLumoDataMgr::getDom(unsigned int id, tagDomTable& record)
{
    CallFrame frame(*this, "getDom");
    return single(frame, LUMO_LEDGER(queryDataSrcDomById), id, record);
}

ENUM_RET_TYPE CLumoDataMgr::getDomByTypeID(unsigned int typeId, QList<tagDomTable>& records)
{
    CallFrame frame(*this, "getDomByTypeID");
    return byType<tagDomTable>(frame, LUMO_LEDGER(queryDataSrcDomByTypeIDTotal),
                               LUMO_LEDGER(queryDataSrcDomByTypeID), typeId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getDomByTypeID(unsigned int typeId, QList<tagImageData>& images)
{
    CallFrame frame(*this, "getDomByTypeID");
    return byType<tagDomTable>(frame, LUMO_LEDGER(queryDataSrcDomByTypeIDTotal),
                               LUMO_LEDGER(queryDataSrcDomByTypeID), typeId, images);
}

ENUM_RET_TYPE CLumoDataMgr::getDomByDataID(unsigned int dataId, QList<tagDomTable>& records)
{
    CallFrame frame(*this, "getDomByDataID");
    return byProject(frame, LUMO_LEDGER(queryDataSrcDomByProjectIDTotal),
                     LUMO_LEDGER(queryDataSrcDomByProjectID), dataId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getDomByDataAndMark(unsigned int dataId, unsigned int mark,
                                                QList<tagDomTable>& records)
{
    CallFrame frame(*this, "getDomByDataAndMark");
    return byProjectAndMark(frame, LUMO_LEDGER(queryDataSrcDomByProjectIDAndCommID), dataId, mark, records);
}

// Line maps

ENUM_RET_TYPE CLumoDataMgr::getDlg(unsigned int id, tagDlgTable& record)
{
    CallFrame frame(*this, "getDlg");
    return single(frame, LUMO_LEDGER(queryDataSrcDlgById), id, record);
}

ENUM_RET_TYPE CLumoDataMgr::getDlgByTypeID(unsigned int typeId, QList<tagDlgTable>& records)
{
    CallFrame frame(*this, "getDlgByTypeID");
    return byType<tagDlgTable>(frame, LUMO_LEDGER(queryDataSrcDlgByTypeIDTotal),
                               LUMO_LEDGER(queryDataSrcDlgByTypeID), typeId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getDlgByTypeID(unsigned int typeId, QList<tagImageData>& images)
{
    CallFrame frame(*this, "getDlgByTypeID");
    return byType<tagDlgTable>(frame, LUMO_LEDGER(queryDataSrcDlgByTypeIDTotal),
                               LUMO_LEDGER(queryDataSrcDlgByTypeID), typeId, images);
}

ENUM_RET_TYPE CLumoDataMgr::getDlgByDataID(unsigned int dataId, QList<tagDlgTable>& records)
{
    CallFrame frame(*this, "getDlgByDataID");
    return byProject(frame, LUMO_LEDGER(queryDataSrcDlgByProjectIDTotal),
                     LUMO_LEDGER(queryDataSrcDlgByProjectID), dataId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getDlgByDataAndMark(unsigned int dataId, unsigned int mark,
                                                QList<tagDlgTable>& records)
{
    CallFrame frame(*this, "getDlgByDataAndMark");
    return byProjectAndMark(frame, LUMO_LEDGER(queryDataSrcDlgByProjectIDAndCommID), dataId, mark, records);
}
