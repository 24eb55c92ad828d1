#ifndef LUMO_CATALOG_IMAGEDATA_H
#define LUMO_CATALOG_IMAGEDATA_H

#include "lumo/catalog/ControlRecords.h"
#include "lumo/catalog/ImageRecords.h"
#include "lumo/catalog/ProductRecords.h"
#include "lumo/catalog/ProjectRecords.h"

/// A record of the image catalogue, of any kind but the control file: the element of lists that may hold
/// several kinds. It is as wide as the widest record, and copied whole.
struct tagImageData
{
    union {
        tagDataTable data;           ///< DATA_TYPE_DATA
        tagTypeTable type;           ///< DATA_TYPE_TYPE
        tagKFImageTable kfImage;     ///< DATA_TYPE_KF_IMAGE
        tagSatTable satImage;        ///< DATA_TYPE_SAT_IMAGE
        tagAdsTable adsImage;        ///< DATA_TYPE_ADS_IMAGE
        tagCtrlPointTable ctrlPoint; ///< DATA_TYPE_CTRL_POINT
        tagDemTable dem;             ///< DATA_TYPE_DEM
        tagDsmTable dsm;             ///< DATA_TYPE_DSM
        tagDomTable dom;             ///< DATA_TYPE_DOM
        tagDlgTable dlg;             ///< DATA_TYPE_DLG
    } body;
    int recordKind; ///< an ENUM_DATA_TYPE: the one member of `body` that is valid
};

#endif
