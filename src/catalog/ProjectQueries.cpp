#include "catalog/RecordQueries.h"

using recordqueries::appendTo;
using recordqueries::DataUtilBeanReq;
using recordqueries::single;

namespace {

template <class Element>
ENUM_RET_TYPE projectsOf(CallFrame&& frame, unsigned int companyID, QList<Element>& data)
{
    DataUtilBeanReq request;
    request.set_company_id(static_cast<int>(companyID));
    return frame.pages(LEDGER(queryDataSrcTotal), LEDGER(queryDataSrc), request, appendTo<tagDataTable>(data),
                       data);
}

template <class Element>
ENUM_RET_TYPE typesOf(CallFrame&& frame, unsigned int dataId, QList<Element>& types)
{
    DataUtilBeanReq request;
    request.set_project_id(static_cast<int>(dataId));
    return frame.judged(LEDGER(queryDataSrcTypeByProjectID), request, appendTo<tagTypeTable>(types));
}

} // namespace

// Data projects and types

ENUM_RET_TYPE CLumoDataMgr::getData(unsigned int dataId, tagDataTable& data)
{
    DataUtilBeanReq request;
    request.set_project_id(static_cast<int>(dataId));
    return single(CallFrame(*this, "getData"), LEDGER(queryDataSrcByProjectID), request, data);
}

ENUM_RET_TYPE CLumoDataMgr::getData(const QString& name, tagDataTable& data)
{
    CallFrame frame(*this, "getData");
    DataUtilBeanReq request;
    request.set_company_id(static_cast<int>(m_CompanyID));
    request.set_proname(name.toUtf8().constData());
    return single(std::move(frame), LEDGER(queryDataSrcByProjectName), request, data);
}

ENUM_RET_TYPE CLumoDataMgr::getData(QList<tagDataTable>& data)
{
    return projectsOf(CallFrame(*this, "getData"), m_CompanyID, data);
}

ENUM_RET_TYPE CLumoDataMgr::getData(QList<tagImageData>& data)
{
    return projectsOf(CallFrame(*this, "getData"), m_CompanyID, data);
}

ENUM_RET_TYPE CLumoDataMgr::getDataType(unsigned int typeId, tagTypeTable& type)
{
    DataUtilBeanReq request;
    request.set_type_id(static_cast<int>(typeId));
    return single(CallFrame(*this, "getDataType"), LEDGER(queryDataSrcTypeByTypeId), request, type);
}

ENUM_RET_TYPE CLumoDataMgr::getDataType(unsigned int dataId, const QString& name, tagTypeTable& type)
{
    CallFrame frame(*this, "getDataType");
    DataUtilBeanReq request;
    request.set_project_id(static_cast<int>(dataId));
    request.set_data_type(name.toUtf8().constData());
    return single(std::move(frame), LEDGER(queryDataSrcTypeByTypeAndproId), request, type);
}

ENUM_RET_TYPE CLumoDataMgr::getDataTypeByDataID(unsigned int dataId, QList<tagTypeTable>& types)
{
    return typesOf(CallFrame(*this, "getDataTypeByDataID"), dataId, types);
}

ENUM_RET_TYPE CLumoDataMgr::getDataTypeByDataID(unsigned int dataId, QList<tagImageData>& types)
{
    return typesOf(CallFrame(*this, "getDataTypeByDataID"), dataId, types);
}
