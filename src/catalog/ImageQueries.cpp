#include "catalog/RecordQueries.h"

using recordqueries::byProject;
using recordqueries::byProjectAndMark;
using recordqueries::byType;
using recordqueries::single;

// Frame photographs

ENUM_RET_TYPE CLumoDataMgr::getKFImage(unsigned int id, tagKFImageTable& record)
{
    return single(CallFrame(*this, "getKFImage"), LEDGER(queryDataSrcPhotoById), id, record);
}

ENUM_RET_TYPE CLumoDataMgr::getKFImageByTypeID(unsigned int typeId, QList<tagKFImageTable>& records)
{
    return byType<tagKFImageTable>(CallFrame(*this, "getKFImageByTypeID"),
                                   LEDGER(queryDataSrcPhotoByTypeIDTotal), LEDGER(queryDataSrcPhotoByTypeID),
                                   typeId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getKFImageByTypeID(unsigned int typeId, QList<tagImageData>& images)
{
    return byType<tagKFImageTable>(CallFrame(*this, "getKFImageByTypeID"),
                                   LEDGER(queryDataSrcPhotoByTypeIDTotal), LEDGER(queryDataSrcPhotoByTypeID),
                                   typeId, images);
}

ENUM_RET_TYPE CLumoDataMgr::getKFImageByDataID(unsigned int dataId, QList<tagKFImageTable>& records)
{
    return byProject(CallFrame(*this, "getKFImageByDataID"), LEDGER(queryDataSrcPhotoByProjectIDTotal),
                     LEDGER(queryDataSrcPhotoByProjectID), dataId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getKFImageByDataAndMark(unsigned int dataId, unsigned int mark,
                                                    QList<tagKFImageTable>& records)
{
    return byProjectAndMark(CallFrame(*this, "getKFImageByDataAndMark"),
                            LEDGER(queryDataSrcPhotoByProjectIDAndCommID), dataId, mark, records);
}

// Satellite images

ENUM_RET_TYPE CLumoDataMgr::getSatImage(unsigned int id, tagSatTable& record)
{
    return single(CallFrame(*this, "getSatImage"), LEDGER(queryDataSrcSatById), id, record);
}

ENUM_RET_TYPE CLumoDataMgr::getSatImageByTypeID(unsigned int typeId, QList<tagSatTable>& records)
{
    return byType<tagSatTable>(CallFrame(*this, "getSatImageByTypeID"), LEDGER(queryDataSrcSatByTypeIDTotal),
                               LEDGER(queryDataSrcSatByTypeID), typeId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getSatImageByTypeID(unsigned int typeId, QList<tagImageData>& images)
{
    return byType<tagSatTable>(CallFrame(*this, "getSatImageByTypeID"), LEDGER(queryDataSrcSatByTypeIDTotal),
                               LEDGER(queryDataSrcSatByTypeID), typeId, images);
}

ENUM_RET_TYPE CLumoDataMgr::getSatImageByDataID(unsigned int dataId, QList<tagSatTable>& records)
{
    return byProject(CallFrame(*this, "getSatImageByDataID"), LEDGER(queryDataSrcSatByProjectIDTotal),
                     LEDGER(queryDataSrcSatByProjectID), dataId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getSatByDataAndMark(unsigned int dataId, unsigned int mark,
                                                QList<tagSatTable>& records)
{
    return byProjectAndMark(CallFrame(*this, "getSatByDataAndMark"),
                            LEDGER(queryDataSrcSatByProjectIDAndCommID), dataId, mark, records);
}

// Airborne three-line images

ENUM_RET_TYPE CLumoDataMgr::getAdsImage(unsigned int id, tagAdsTable& record)
{
    return single(CallFrame(*this, "getAdsImage"), LEDGER(queryDataSrcAdsById), id, record);
}

ENUM_RET_TYPE CLumoDataMgr::getAdsImageByTypeID(unsigned int typeId, QList<tagAdsTable>& records)
{
    return byType<tagAdsTable>(CallFrame(*this, "getAdsImageByTypeID"), LEDGER(queryDataSrcAdsByTypeIDTotal),
                               LEDGER(queryDataSrcAdsByTypeID), typeId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getAdsImageByTypeID(unsigned int typeId, QList<tagImageData>& images)
{
    return byType<tagAdsTable>(CallFrame(*this, "getAdsImageByTypeID"), LEDGER(queryDataSrcAdsByTypeIDTotal),
                               LEDGER(queryDataSrcAdsByTypeID), typeId, images);
}

ENUM_RET_TYPE CLumoDataMgr::getAdsImageByDataID(unsigned int dataId, QList<tagAdsTable>& records)
{
    return byProject(CallFrame(*this, "getAdsImageByDataID"), LEDGER(queryDataSrcAdsByProjectIDTotal),
                     LEDGER(queryDataSrcAdsByProjectID), dataId, records);
}

ENUM_RET_TYPE CLumoDataMgr::getAdsByDataAndMark(unsigned int dataId, unsigned int mark,
                                                QList<tagAdsTable>& records)
{
    return byProjectAndMark(CallFrame(*this, "getAdsByDataAndMark"),
                            LEDGER(queryDataSrcAdsByProjectIDAndCommID), dataId, mark, records);
}
