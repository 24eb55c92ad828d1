#include "catalog/RecordQueries.h"
#include "lumo/core/Identifier.h"

using ledgerserver::SrcTableUtilBeanReq;
using recordqueries::appendTo;
using recordqueries::DataUtilBeanReq;
using recordqueries::single;

namespace {

/// Reads a path and the code of the storage box that it is on.
auto into(QString& path, QString& kestaCode)
{
    return [&](const auto& response) {
        path = QString::fromStdString(response.full_path());
        kestaCode = QString::fromStdString(response.kesta_code());
    };
}

} // namespace

// Disks

ENUM_RET_TYPE CLumoDataMgr::getDisk(unsigned int id, tagDiskTable& disk)
{
    CallFrame frame(*this, "getDisk");
    DataUtilBeanReq request;
    request.set_record_id(static_cast<int>(id));
    return single(frame, LUMO_LEDGER(queryDataAddressByID), request, disk);
}

ENUM_RET_TYPE CLumoDataMgr::getDisk(const QString& name, tagDiskTable& disk)
{
    CallFrame frame(*this, "getDisk");
    DataUtilBeanReq request;
    request.set_company_id(static_cast<int>(m_CompanyID));
    request.set_name(name.toUtf8().constData());
    return single(frame, LUMO_LEDGER(queryDataAddressByName), request, disk);
}

ENUM_RET_TYPE CLumoDataMgr::getDisk(QList<tagDiskTable>& disks)
{
    CallFrame frame(*this, "getDisk");
    DataUtilBeanReq request;
    request.set_company_id(static_cast<int>(m_CompanyID));
    request.set_address_kind(1);
    return frame.ask(LUMO_LEDGER(queryDataAddress), request, verdicts::found, appendTo(disks));
}

// Folders and files

ENUM_RET_TYPE CLumoDataMgr::getFolder(unsigned int folderID, tagFolderTable& folder)
{
    CallFrame frame(*this, "getFolder");
    DataUtilBeanReq request;
    request.set_src_id(folderID);
    return single(frame, LUMO_LEDGER(querySrcTableBySrcId), request, folder);
}

unsigned int CLumoDataMgr::getFolderID(unsigned int diskID, unsigned int parentID, const QString& name)
{
    CallFrame frame(*this, "getFolderID");
    SrcTableUtilBeanReq request;
    request.set_disk_id(diskID);
    request.set_parent_src_id(parentID);
    request.set_srcname(name.toUtf8().constData());
    unsigned int id = kNoIdentifier;
    frame.ask(LUMO_LEDGER(querySrcTableByUniqueness), request, verdicts::zero, readers::beanId(id));
    return id;
}

ENUM_RET_TYPE CLumoDataMgr::getFolderByParentID(unsigned int parentID, QList<tagFolderTable>& folders)
{
    CallFrame frame(*this, "getFolderByParentID");
    DataUtilBeanReq request;
    request.set_parent_src_id(parentID);
    return frame.pages(LUMO_LEDGER(querySrcTableByParentSrcIdTotal), LUMO_LEDGER(querySrcTableByParentSrcId),
                       request, folders, appendTo(folders));
}

ENUM_RET_TYPE CLumoDataMgr::getFolderByDataAndComment(unsigned int dataID, unsigned int commentID,
                                                      QList<tagFolderTable>& folders)
{
    CallFrame frame(*this, "getFolderByDataAndComment");
    DataUtilBeanReq request;
    request.set_project_id(static_cast<int>(dataID));
    request.set_comment_id(commentID);
    return frame.pages(LUMO_LEDGER(querySrcTableByProjectIDAndCommentIdTotal),
                       LUMO_LEDGER(querySrcTableByProjectIDAndCommentIdForPage), request, folders,
                       appendTo(folders));
}

ENUM_RET_TYPE CLumoDataMgr::getFile(unsigned int fileID, tagFileTable& file)
{
    CallFrame frame(*this, "getFile");
    DataUtilBeanReq request;
    request.set_file_id(fileID);
    return single(frame, LUMO_LEDGER(queryFileTableByFileId), request, file);
}

ENUM_RET_TYPE CLumoDataMgr::getFile(const QList<unsigned int>& fileIDs, QList<tagFileTable>& files)
{
    CallFrame frame(*this, "getFile");
    DataUtilBeanReq request;
    for (const unsigned int fileID : fileIDs)
        request.add_list_file_id(fileID);
    return frame.ask(LUMO_LEDGER(queryFileTableByFilePathId), request, verdicts::found, appendTo(files));
}

ENUM_RET_TYPE CLumoDataMgr::getFileByName(unsigned int parentID, const QString& name, tagFileTable& file)
{
    CallFrame frame(*this, "getFileByName");
    DataUtilBeanReq request;
    request.set_src_id(parentID);
    request.set_filename(name.toUtf8().constData());
    return single(frame, LUMO_LEDGER(queryFileTableByName), request, file);
}

ENUM_RET_TYPE CLumoDataMgr::getFileByParentID(unsigned int parentID, QList<tagFileTable>& files)
{
    CallFrame frame(*this, "getFileByParentID");
    DataUtilBeanReq request;
    request.set_src_id(parentID);
    return frame.pages(LUMO_LEDGER(queryFileTableBySrcIdTotal), LUMO_LEDGER(queryFileTableBySrcId), request,
                       files, appendTo(files));
}

ENUM_RET_TYPE CLumoDataMgr::getFileByDataAndComment(unsigned int dataID, unsigned int commentID,
                                                    QList<tagFileTable>& files)
{
    CallFrame frame(*this, "getFileByDataAndComment");
    DataUtilBeanReq request;
    request.set_project_id(static_cast<int>(dataID));
    request.set_comment_id(commentID);
    return frame.pages(LUMO_LEDGER(queryFileTableByProjectIDAndCommentIdTotal),
                       LUMO_LEDGER(queryFileTableByProjectIDAndCommentIdForPage), request, files,
                       appendTo(files));
}

QString CLumoDataMgr::getFileFullPath(unsigned int fileID, QString& kestaCode)
{
    CallFrame frame(*this, "getFileFullPath");
    DataUtilBeanReq request;
    request.set_file_id(fileID);
    QString path;
    frame.ask(LUMO_LEDGER(getFileFullPath), request, verdicts::zero, into(path, kestaCode));
    return path;
}

QString CLumoDataMgr::getFolderFullPath(unsigned int folderID, QString& kestaCode)
{
    CallFrame frame(*this, "getFolderFullPath");
    DataUtilBeanReq request;
    request.set_src_id(folderID);
    QString path;
    frame.ask(LUMO_LEDGER(getFolderFullPath), request, verdicts::zero, into(path, kestaCode));
    return path;
}
