#ifndef LUMO_CATALOG_RECORDKINDS_H
#define LUMO_CATALOG_RECORDKINDS_H

#include "ledgerserver.pb.h"
#include "lumo/core/LumoDataMgr.h"

#include <type_traits>

/// What the queries need to know of a kind of record: the response that brings it, the response's list of
/// beans and the conversion.
template <class Record>
struct RecordKind;

/// Where tagImageData holds a kind of record.
template <class Record>
struct ImageDataMember;

#define LUMO_RECORD_KIND(Record, Message, list, conversion)                                                  \
    template <>                                                                                              \
    struct RecordKind<Record>                                                                                \
    {                                                                                                        \
        static_assert(std::is_trivially_copyable<Record>::value, "records are copied whole");                \
        using Response = ledgerserver::Message;                                                              \
        using Type = Record;                                                                                 \
        static const auto& beans(const Response& response) { return response.list(); }                       \
        template <class Bean>                                                                                \
        static void convert(const Bean& bean, Type& record)                                                  \
        {                                                                                                    \
            CLumoDataMgr::conversion(bean, record);                                                          \
        }                                                                                                    \
    }

#define LUMO_IMAGE_DATA_MEMBER(Record, member, kind)                                                         \
    template <>                                                                                              \
    struct ImageDataMember<Record>                                                                           \
    {                                                                                                        \
        using Type = Record;                                                                                 \
        static constexpr ENUM_DATA_TYPE recordKind = kind;                                                   \
        static Type& of(tagImageData& image) { return image.body.member; }                                   \
    }

// clang-format off
LUMO_RECORD_KIND(tagDiskTable,      AddressUtilBeanRsp,     dataaddresss,        getDiskFromBean);
LUMO_RECORD_KIND(tagFolderTable,    SrcTableUtilBeanRsp,    srctabs,             getFolderFromBean);
LUMO_RECORD_KIND(tagFileTable,      FileTableUtilBeanRsp,   filetabs,            getFileFromBean);
LUMO_RECORD_KIND(tagDataTable,      DataSrcUtilBeanRsp,     datasrcs,            getDataFromBean);
LUMO_RECORD_KIND(tagTypeTable,      TypeUtilBeanRsp,        datasrctypes,        getDataTypeFromBean);
LUMO_RECORD_KIND(tagKFImageTable,   PhotoUtilBeanRsp,       datasrcphotos,       getKFImageDataFromBean);
LUMO_RECORD_KIND(tagSatTable,       SatUtilBeanRsp,         datasrcsats,         getSatImageDataFromBean);
LUMO_RECORD_KIND(tagAdsTable,       AdsUtilBeanRsp,         datasrcadss,         getAdsImageDataFromBean);
LUMO_RECORD_KIND(tagCtrlFileTable,  ControlUtilBeanRsp,     datasrccontrols,     getCtrlFileDataFromBean);
LUMO_RECORD_KIND(tagCtrlPointTable, ControlInfoUtilBeanRsp, datasrccontrolinfos, getCtrlPointDataFromBean);
LUMO_RECORD_KIND(tagDemTable,       DemUtilBeanRsp,         datasrcdems,         getDemDataFromBean);
LUMO_RECORD_KIND(tagDsmTable,       DsmUtilBeanRsp,         datasrcdsms,         getDsmDataFromBean);
LUMO_RECORD_KIND(tagDomTable,       DomUtilBeanRsp,         datasrcdoms,         getDomDataFromBean);
LUMO_RECORD_KIND(tagDlgTable,       DlgUtilBeanRsp,         datasrcdlgs,         getDlgDataFromBean);

LUMO_IMAGE_DATA_MEMBER(tagDataTable,      data,      DATA_TYPE_DATA);
LUMO_IMAGE_DATA_MEMBER(tagTypeTable,      type,      DATA_TYPE_TYPE);
LUMO_IMAGE_DATA_MEMBER(tagKFImageTable,   kfImage,   DATA_TYPE_KF_IMAGE);
LUMO_IMAGE_DATA_MEMBER(tagSatTable,       satImage,  DATA_TYPE_SAT_IMAGE);
LUMO_IMAGE_DATA_MEMBER(tagAdsTable,       adsImage,  DATA_TYPE_ADS_IMAGE);
LUMO_IMAGE_DATA_MEMBER(tagCtrlPointTable, ctrlPoint, DATA_TYPE_CTRL_POINT);
LUMO_IMAGE_DATA_MEMBER(tagDemTable,       dem,       DATA_TYPE_DEM);
LUMO_IMAGE_DATA_MEMBER(tagDsmTable,       dsm,       DATA_TYPE_DSM);
LUMO_IMAGE_DATA_MEMBER(tagDomTable,       dom,       DATA_TYPE_DOM);
LUMO_IMAGE_DATA_MEMBER(tagDlgTable,       dlg,       DATA_TYPE_DLG);
// clang-format on

#undef LUMO_RECORD_KIND
#undef LUMO_IMAGE_DATA_MEMBER

#endif
