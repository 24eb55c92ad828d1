#include "catalog/RecordQueries.h"

using recordqueries::byProject;
using recordqueries::byProjectAndMark;
using recordqueries::byType;
using recordqueries::single;

// Frame photographs

ENUM_RET_TYPE CLumoDataMgr::getKFImage(unsigned int id, tagKFImageTable& record)
{
    CallFrame frame(*this, "getKFImage");
    return single(frame, LUMO_LEDGER(queryDataSrcPhotoById), id, record);
}

ENUM_RET_TYPE CLumoDataMgr::getKFImageByTypeID(unsigned int typeId, QList<tagKFImageTable>& records)
{
    CallFrame frame(*this, "getKFImageByTypeID");
    return byType<tagKFImageTable>(frame, LUMO_LEDGER(queryDataSrcPhotoByTypeIDTotal),
                                   LUMO_LEDGER(queryDataSrcPhotoByTypeID), typeId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getKFImageByTypeID(unsigned int typeId, QList<tagImageData>& images)
{
    CallFrame frame(*this, "getKFImageByTypeID");
    return byType<tagKFImageTable>(frame, LUMO_LEDGER(queryDataSrcPhotoByTypeIDTotal),
                                   LUMO_LEDGER(queryDataSrcPhotoByTypeID), typeId, images);
}

ENUM_RET_TYPE CLumoDataMgr::getKFImageByDataID(unsigned int dataId, QList<tagKFImageTable>& records)
{
    CallFrame frame(*this, "getKFImageByDataID");
    return byProject(frame, LUMO_LEDGER(queryDataSrcPhotoByProjectIDTotal),
                     LUMO_LEDGER(queryDataSrcPhotoByProjectID), dataId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getKFImageByDataAndMark(unsigned int dataId, unsigned int mark,
                                                    QList<tagKFImageTable>& records)
{
    CallFrame frame(*this, "getKFImageByDataAndMark");
    return byProjectAndMark(frame, LUMO_LEDGER(queryDataSrcPhotoByProjectIDAndCommID), dataId, mark, records);
}

// Satellite images

ENUM_RET_TYPE CLumoDataMgr::getSatImage(unsigned int id, tagSatTable& record)
{
    CallFrame frame(*this, "getSatImage");
    return single(frame, LUMO_LEDGER(queryDataSrcSatById), id, record);
}

ENUM_RET_TYPE CLumoDataMgr::getSatImageByTypeID(unsigned int typeId, QList<tagSatTable>& records)
{
    CallFrame frame(*this, "getSatImageByTypeID");
    return byType<tagSatTable>(frame, LUMO_LEDGER(queryDataSrcSatByTypeIDTotal),
                               LUMO_LEDGER(queryDataSrcSatByTypeID), typeId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getSatImageByTypeID(unsigned int typeId, QList<tagImageData>& images)
{
    CallFrame frame(*this, "getSatImageByTypeID");
    return byType<tagSatTable>(frame, LUMO_LEDGER(queryDataSrcSatByTypeIDTotal),
                               LUMO_LEDGER(queryDataSrcSatByTypeID), typeId, images);
}

ENUM_RET_TYPE CLumoDataMgr::getSatImageByDataID(unsigned int dataId, QList<tagSatTable>& records)
{
    CallFrame frame(*this, "getSatImageByDataID");
    return byProject(frame, LUMO_LEDGER(queryDataSrcSatByProjectIDTotal),
                     LUMO_LEDGER(queryDataSrcSatByProjectID), dataId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getSatByDataAndMark(unsigned int dataId, unsigned int mark,
                                                QList<tagSatTable>& records)
{
    CallFrame frame(*this, "getSatByDataAndMark");
    return byProjectAndMark(frame, LUMO_LEDGER(queryDataSrcSatByProjectIDAndCommID), dataId, mark, records);
}

// Airborne three-line images

ENUM_RET_TYPE CLumoDataMgr::getAdsImage(unsigned int id, tagAdsTable& record)
{
    CallFrame frame(*this, "getAdsImage");
    return single(frame, LUMO_LEDGER(queryDataSrcAdsById), id, record);
}

ENUM_RET_TYPE CLumoDataMgr::getAdsImageByTypeID(unsigned int typeId, QList<tagAdsTable>& records)
{
    CallFrame frame(*this, "getAdsImageByTypeID");
    return byType<tagAdsTable>(frame, LUMO_LEDGER(queryDataSrcAdsByTypeIDTotal),
                               LUMO_LEDGER(queryDataSrcAdsByTypeID), typeId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getAdsImageByTypeID(unsigned int typeId, QList<tagImageData>& images)
{
    CallFrame frame(*this, "getAdsImageByTypeID");
    return byType<tagAdsTable>(frame, LUMO_LEDGER(queryDataSrcAdsByTypeIDTotal),
                               LUMO_LEDGER(queryDataSrcAdsByTypeID), typeId, images);
}

ENUM_RET_TYPE CLumoDataMgr::getAdsImageByDataID(unsigned int dataId, QList<tagAdsTable>& records)
{
    CallFrame frame(*this, "getAdsImageByDataID");
    return byProject(frame, LUMO_LEDGER(queryDataSrcAdsByProjectIDTotal),
                     LUMO_LEDGER(queryDataSrcAdsByProjectID), dataId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getAdsByDataAndMark(unsigned int dataId, unsigned int mark,
                                                QList<tagAdsTable>& records)
{
    CallFrame frame(*this, "getAdsByDataAndMark");
    return byProjectAndMark(frame, LUMO_LEDGER(queryDataSrcAdsByProjectIDAndCommID), dataId, mark, records);
}
