#include "catalog/RecordQueries.h"
#include "core/GbkTexts.h"
#include "core/LogLine.h"
#include "lumo/core/CStringCodec.h"

#include <cstring>
#include <strings.h>

using recordqueries::appendTo;
using recordqueries::DataUtilBeanReq;

namespace {

bool is(const tagTypeTable& type, const char* name)
{
    return std::strcmp(type.dataType, name) == 0;
}

bool isInAnyCase(const tagTypeTable& type, const char* name)
{
    return strcasecmp(type.dataType, name) == 0;
}

/// Whether a text of the condition asks for another type than this one.
bool differs(const QString& wanted, const char* text)
{
    return !wanted.isEmpty() && wanted.compare(CLumoCStringCodec::fromAscii(text)) != 0;
}

void setCondition(DataUtilBeanReq& request, const tagQueryCondition& condition)
{
    request.set_proname(condition.projectName.toUtf8().constData());
    request.set_data_type(condition.dataType.toUtf8().constData());
    request.set_sentype(condition.senType.toUtf8().constData());
    request.set_start_date(condition.startDate.toUtf8().constData());
    request.set_end_date(condition.endDate.toUtf8().constData());
    request.set_bound_a(condition.boundA);
    request.set_bound_b(condition.boundB);
    request.set_bound_c(condition.boundC);
    request.set_bound_d(condition.boundD);
    request.set_use_bounds(condition.useBounds);
}

template <class Record>
ENUM_RET_TYPE search(CallFrame& frame, const recordqueries::Operation<Record>& operation,
                     const DataUtilBeanReq& request, QList<tagImageData>& images)
{
    return frame.ask(operation, request, verdicts::found, appendTo<Record>(images));
}

} // namespace

// Search

ENUM_RET_TYPE CLumoDataMgr::searchDataType(const tagQueryCondition& condition, QList<tagTypeTable>& types)
{
    CallFrame frame(*this, "searchDataType");
    DataUtilBeanReq request;
    request.set_company_id(static_cast<int>(m_CompanyID));
    setCondition(request, condition);
    return frame.ask(LUMO_LEDGER(searchDataType), request, verdicts::found, appendTo(types));
}

ENUM_RET_TYPE CLumoDataMgr::searchByDataType(const tagTypeTable& type, const tagQueryCondition& condition,
                                             QList<tagImageData>& images)
{
    CallFrame frame(*this, "searchByDataType");
    if (differs(condition.projectName, type.projectName)) {
        frame.write("DataName isn't Match");
        return frame.leave(RET_FAILED);
    }
    if (differs(condition.dataType, type.dataType)) {
        frame.write("DataType isn't Match");
        return frame.leave(RET_FAILED);
    }
    DataUtilBeanReq request;
    request.set_type_id(static_cast<int>(type.typeID));
    setCondition(request, condition);
    if (is(type, gbktexts::kFramePhotographs))
        return search<tagKFImageTable>(frame, LUMO_LEDGER(searchDataByTypePhoto), request, images);
    if (is(type, gbktexts::kSatelliteImages))
        return search<tagSatTable>(frame, LUMO_LEDGER(searchDataByTypeSat), request, images);
    if (is(type, gbktexts::kThreeLineImages))
        return search<tagAdsTable>(frame, LUMO_LEDGER(searchDataByTypeAds), request, images);
    if (is(type, gbktexts::kControlPoints))
        return search<tagCtrlPointTable>(frame, LUMO_LEDGER(searchDataByTypeControlInfo), request, images);
    if (isInAnyCase(type, "Dem"))
        return search<tagDemTable>(frame, LUMO_LEDGER(searchDataByTypeDem), request, images);
    if (isInAnyCase(type, "Dsm"))
        return search<tagDsmTable>(frame, LUMO_LEDGER(searchDataByTypeDsm), request, images);
    if (isInAnyCase(type, "Dom"))
        return search<tagDomTable>(frame, LUMO_LEDGER(searchDataByTypeDom), request, images);
    if (isInAnyCase(type, "Dlg"))
        return search<tagDlgTable>(frame, LUMO_LEDGER(searchDataByTypeDlg), request, images);
    return frame.leave(RET_SUCCESS);
}

ENUM_RET_TYPE CLumoDataMgr::getImageByType(const tagTypeTable& type, QList<tagImageData>& images)
{
    if (is(type, gbktexts::kFramePhotographs))
        return getKFImageByTypeID(type.typeID, images);
    if (is(type, gbktexts::kSatelliteImages))
        return getSatImageByTypeID(type.typeID, images);
    if (is(type, gbktexts::kThreeLineImages))
        return getAdsImageByTypeID(type.typeID, images);
    if (is(type, "DEM"))
        return getDemByTypeID(type.typeID, images);
    if (is(type, "DSM"))
        return getDsmByTypeID(type.typeID, images);
    if (is(type, "DOM"))
        return getDomByTypeID(type.typeID, images);
    if (is(type, "DLG"))
        return getDlgByTypeID(type.typeID, images);
    LUMO_LOG("CLumoDataMgr::getImageByType", "Image Type Error");
    return RET_FAILED;
}
