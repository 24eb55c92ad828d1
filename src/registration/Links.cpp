#include "catalog/RecordQueries.h"
#include "forgeserver.pb.h"
#include "lumo/core/Identifier.h"

using ledgerserver::DataFileUtilBeanReq;
using ledgerserver::DataFolderUtilBeanReq;
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
    CallFrame frame(*this, "linkDataFolder");
    return frame.ask(LUMO_LEDGER(addDataFolder), folderOfProject(dataID, folderID), verdicts::zero,
                     readers::nothing());
}

bool CLumoDataMgr::unlinkDataFolder(unsigned int dataID, unsigned int folderID)
{
    CallFrame frame(*this, "unlinkDataFolder");
    return frame.ask(LUMO_LEDGER(deleteDataFolderByProjectIDAndSrcId), folderOfProject(dataID, folderID),
                     verdicts::zero, readers::nothing());
}

bool CLumoDataMgr::linkDataFile(unsigned int dataID, unsigned int fileID)
{
    CallFrame frame(*this, "linkDataFile");
    return frame.ask(LUMO_LEDGER(addDataFile), fileOfProject(dataID, fileID), verdicts::zero,
                     readers::nothing());
}

bool CLumoDataMgr::unlinkDataFile(unsigned int dataID, unsigned int fileID)
{
    CallFrame frame(*this, "unlinkDataFile");
    return frame.ask(LUMO_LEDGER(deleteDataFileByProjectIDAndFileId), fileOfProject(dataID, fileID),
                     verdicts::zero, readers::nothing());
}

bool CLumoDataMgr::getDataByFolder(unsigned int folderID, tagDataTable& data)
{
    CallFrame frame(*this, "getDataByFolder");
    DataUtilBeanReq request;
    request.set_src_id(folderID);
    return recordqueries::firstOf(frame, LUMO_LEDGER(queryDataSrcBySrcId), request, data);
}

bool CLumoDataMgr::getDataByFile(unsigned int fileID, tagDataTable& data)
{
    CallFrame frame(*this, "getDataByFile");
    DataUtilBeanReq request;
    request.set_file_id(fileID);
    return recordqueries::firstOf(frame, LUMO_LEDGER(queryDataSrcByFileId), request, data);
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
    frame.ask(LUMO_FORGE(CreateFolder), request, verdicts::any,
              [&](const forgeserver::CreateFolderRsp& response) { id = response.folder_id(); });
    return id;
}
