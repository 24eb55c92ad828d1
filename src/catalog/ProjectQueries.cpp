#include "catalog/RecordQueries.h"

using recordqueries::appendTo;
using recordqueries::DataUtilBeanReq;
using recordqueries::single;

namespace {

template <class Element>
ENUM_RET_TYPE projectsOf(CallFrame& frame, unsigned int companyID, QList<Element>& data)
{
    DataUtilBeanReq request;
    request.set_company_id(static_cast<int>(companyID));
    return frame.pages(LUMO_LEDGER(queryDataSrcTotal), LUMO_LEDGER(queryDataSrc), request, data,
                       appendTo<tagDataTable>(data));
}

template <class Element>
ENUM_RET_TYPE typesOf(CallFrame& frame, unsigned int dataId, QList<Element>& types)
{
    DataUtilBeanReq request;
    request.set_project_id(static_cast<int>(dataId));
    return frame.ask(LUMO_LEDGER(queryDataSrcTypeByProjectID), request, verdicts::found,
                     appendTo<tagTypeTable>(types));
}

} // namespace

// Data projects and types

ENUM_RET_TYPE CLumoDataMgr::getData(unsigned int dataId, tagDataTable& data)
{
    CallFrame frame(*this, "getData");
    DataUtilBeanReq request;
    request.set_project_id(static_cast<int>(dataId));
    return single(frame, LUMO_LEDGER(queryDataSrcByProjectID), request, data);
}

ENUM_RET_TYPE CLumoDataMgr::getData(const QString& name, tagDataTable& data)
{
    CallFrame frame(*this, "getData");
    DataUtilBeanReq request;
    request.set_company_id(static_cast<int>(m_CompanyID));
    request.set_proname(name.toUtf8().constData());
    return single(frame, LUMO_LEDGER(queryDataSrcByProjectName), request, data);
}

ENUM_RET_TYPE CLumoDataMgr::getData(QList<tagDataTable>& data)
{
    CallFrame frame(*this, "getData");
    return projectsOf(frame, m_CompanyID, data);
}

ENUM_RET_TYPE CLumoDataMgr::getData(QList<tagImageData>& data)
{
    CallFrame frame(*this, "getData");
    return projectsOf(frame, m_CompanyID, data);
}

ENUM_RET_TYPE CLumoDataMgr::getDataType(unsigned int typeId, tagTypeTable& type)
{
    CallFrame frame(*this, "getDataType");
    DataUtilBeanReq request;
    request.set_type_id(static_cast<int>(typeId));
    return single(frame, LUMO_LEDGER(queryDataSrcTypeByTypeId), request, type);
}

ENUM_RET_TYPE CLumoDataMgr::getDataType(unsigned int dataId, const QString& name, tagTypeTable& type)
{
    CallFrame frame(*this, "getDataType");
    DataUtilBeanReq request;
    request.set_project_id(static_cast<int>(dataId));
    request.set_data_type(name.toUtf8().constData());
    return single(frame, LUMO_LEDGER(queryDataSrcTypeByTypeAndproId), request, type);
}

ENUM_RET_TYPE CLumoDataMgr::getDataTypeByDataID(unsigned int dataId, QList<tagTypeTable>& types)
{
    CallFrame frame(*this, "getDataTypeByDataID");
    return typesOf(frame, dataId, types);
}

ENUM_RET_TYPE CLumoDataMgr::getDataTypeByDataID(unsigned int dataId, QList<tagImageData>& types)
{
    CallFrame frame(*this, "getDataTypeByDataID");
    return typesOf(frame, dataId, types);
}
