#include "centre/database/Statement.h"
#include "centre/ledger/Changes.h"
#include "centre/store/Ownership.h"
#include "ledgerserver.pb.h"
#include "lumo/core/LumoDataTypes.h"

namespace centre {

namespace {

using namespace ledgerserver;

/// The statements that link records of a type to data projects.
struct Link
{
    ENUM_DATA_TYPE type;
    Sql add;
    Sql remove;
};

const Link kFolderLink = {
    DATA_TYPE_FOLDER, Sql("INSERT INTO data_folder(project_id, src_id) VALUES (?, ?) ON CONFLICT DO NOTHING"),
    Sql("DELETE FROM data_folder WHERE project_id = ? AND src_id = ?")};
const Link kFileLink = {
    DATA_TYPE_FILE, Sql("INSERT INTO data_file(project_id, file_id) VALUES (?, ?) ON CONFLICT DO NOTHING"),
    Sql("DELETE FROM data_file WHERE project_id = ? AND file_id = ?")};

bool run(const Caller& caller, const Link& link, const Sql& sql, std::uint32_t project, std::uint32_t record)
{
    requireOwn(caller.connection, caller.user, DATA_TYPE_DATA, project);
    requireReadable(caller.connection, caller.user, link.type, record);
    Statement& change = caller.connection.statement(sql);
    const ResetAtEnd resetAtEnd(change);
    change.bindAll(project, record);
    return change.run() > 0;
}

Result add(const Caller& caller, const Link& link, std::uint32_t project, std::uint32_t record)
{
    run(caller, link, link.add, project, record);
    return kDone;
}

Result remove(const Caller& caller, const Link& link, std::uint32_t project, std::uint32_t record)
{
    return run(caller, link, link.remove, project, record) ? kDone : kNothingFound;
}

Result addFolder(const Caller& caller, const DataFolderUtilBeanReq& request, DataFolderUtilBeanRsp&)
{
    return add(caller, kFolderLink, request.project_id(), request.src_id());
}

Result removeFolder(const Caller& caller, const DataFolderUtilBeanReq& request, DataFolderUtilBeanRsp&)
{
    return remove(caller, kFolderLink, request.project_id(), request.src_id());
}

Result addFile(const Caller& caller, const DataFileUtilBeanReq& request, DataFileUtilBeanRsp&)
{
    return add(caller, kFileLink, request.project_id(), request.file_id());
}

Result removeFile(const Caller& caller, const DataFileUtilBeanReq& request, DataFileUtilBeanRsp&)
{
    return remove(caller, kFileLink, request.project_id(), request.file_id());
}

} // namespace

std::vector<Change> linkChanges()
{
    return {
        makeChange("addDataFolder", addFolder),
        makeChange("deleteDataFolderByProjectIDAndSrcId", removeFolder),
        makeChange("addDataFile", addFile),
        makeChange("deleteDataFileByProjectIDAndFileId", removeFile),
    };
}

} // namespace centre
