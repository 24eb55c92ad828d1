#include "catalog/RecordQueries.h"
#include "forgeserver.pb.h"

using ledgerserver::DataFileUtilBeanReq;
using ledgerserver::DataFolderUtilBeanReq;
using ledgerserver::DataSrcUtilBeanRsp;
using recordqueries::DataUtilBeanReq;

namespace {

DataFolderUtilBeanReq folderOfProject(unsigned int dataID, unsigned int folderID)
{
    DataFolderUtilBeanReq request;
    request.set_project_id(dataID);
    request.set_src_id(folderID);
    return request;
}

DataFileUtilBeanReq fileOfProject(unsigned int dataID, unsigned int fileID)
{
    DataFileUtilBeanReq request;
    request.set_project_id(dataID);
    request.set_file_id(fileID);
    return request;
}

} // namespace

// Links

bool CLumoDataMgr::linkDataFolder(unsigned int dataID, unsigned int folderID)
{
    return CallFrame(*this, "linkDataFolder")
        .accepted(LEDGER(addDataFolder), folderOfProject(dataID, folderID));
}

bool CLumoDataMgr::unlinkDataFolder(unsigned int dataID, unsigned int folderID)
{
    return CallFrame(*this, "unlinkDataFolder")
        .accepted(LEDGER(deleteDataFolderByProjectIDAndSrcId), folderOfProject(dataID, folderID));
}

bool CLumoDataMgr::linkDataFile(unsigned int dataID, unsigned int fileID)
{
    return CallFrame(*this, "linkDataFile").accepted(LEDGER(addDataFile), fileOfProject(dataID, fileID));
}

bool CLumoDataMgr::unlinkDataFile(unsigned int dataID, unsigned int fileID)
{
    return CallFrame(*this, "unlinkDataFile")
        .accepted(LEDGER(deleteDataFileByProjectIDAndFileId), fileOfProject(dataID, fileID));
}

bool CLumoDataMgr::getDataByFolder(unsigned int folderID, tagDataTable& data)
{
    DataUtilBeanReq request;
    request.set_src_id(folderID);
    return recordqueries::firstOf(CallFrame(*this, "getDataByFolder"), LEDGER(queryDataSrcBySrcId), request,
                                  data);
}

bool CLumoDataMgr::getDataByFile(unsigned int fileID, tagDataTable& data)
{
    DataUtilBeanReq request;
    request.set_file_id(fileID);
    return recordqueries::firstOf(CallFrame(*this, "getDataByFile"), LEDGER(queryDataSrcByFileId), request,
                                  data);
}

unsigned int CLumoDataMgr::createFolder(unsigned int firstID, unsigned int secondID, const QString& path)
{
    CallFrame frame(*this, "createFolder");
    if (secondID == 0)
        return frame.leave(kNoIdentifier);
    frame.leaveAs("CreateFolder");
    forgeserver::CreateFolderReq request;
    request.set_first_id(firstID);
    request.set_second_id(secondID);
    request.set_folder_path(path.toUtf8().constData());
    unsigned int id = kNoIdentifier;
    frame.answered(FORGE(CreateFolder), request,
                   [&](const forgeserver::CreateFolderRsp& response) { id = response.folder_id(); });
    return id;
}
