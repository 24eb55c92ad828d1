#include "transfer/LumoUploadRunnable.h"

#include "core/GbkTexts.h"
#include "core/LogLine.h"
#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/components/hubline/Hubline.h"
#include "lumo/core/CStringCodec.h"
#include "lumo/core/Identifier.h"
#include "lumo/core/LumoDataMgr.h"
#include "lumo/transfer/TransferCodes.h"
#include "transfer/TransferManager.h"
#include "transfer/TransferPaths.h"

#include <QUuid>
#include <boost/bind.hpp>

#define LUMO_UPLOAD_LOG(function, ...) writeLogLine("LumoUploadRunnable", function, __LINE__, __VA_ARGS__)

using namespace transferpaths;

namespace {

const char kFetchUpload[] = "CLumoUploadRunnable::fetchUploadInformation";

} // namespace

CLumoUploadRunnable::CLumoUploadRunnable(const QString& relativePath, bool overwrite, bool authFlag,
                                         unsigned int extraID, TransferCallback callback)
    : m_Callback(std::move(callback)),
      m_AuthFlag(authFlag),
      m_Overwrite(overwrite),
      m_DestFolderID(kNoIdentifier),
      m_ExtraID(extraID),
      m_RelativePath(withoutTrailingSlashes(withSlashes(relativePath)))
{
}

bool CLumoUploadRunnable::fetchUploadInformation(const QString& localPath,
                                                 const QPair<int, unsigned int>& dest)
{
    const int id = static_cast<int>(dest.second);
    if (dest.first != DATA_TYPE_FOLDER && dest.first != DATA_TYPE_DISK) {
        LUMO_UPLOAD_LOG(kFetchUpload, gbktexts::kDestinationWrong, dest.first, id);
        return false;
    }
    if (!(dest.first == DATA_TYPE_FOLDER ? findFolder(dest.second) : findDisk(dest.second))) {
        LUMO_UPLOAD_LOG(kFetchUpload, gbktexts::kDestinationNotFound, dest.first, id);
        return false;
    }
    m_KestaIP = manager().getKestaIP(m_KestaCode);
    if (m_KestaIP.isEmpty()) {
        LUMO_UPLOAD_LOG(kFetchUpload, gbktexts::kBoxNotFound,
                        CLumoCStringCodec::toStdString(m_KestaCode).c_str());
        return false;
    }
    m_LocalPath = withoutTrailingSlashes(normalizedLocalPath(localPath));
    fillAuthMsg();
    return true;
}

bool CLumoUploadRunnable::findFolder(unsigned int id)
{
    const QString path = manager().getFolderFullPath(id, m_KestaCode);
    m_DestPath = normalizedBoxFolder(path);
    m_DestFolderID = id;
    return !path.isEmpty();
}

bool CLumoUploadRunnable::findDisk(unsigned int id)
{
    tagDiskTable disk = tagDiskTable();
    if (manager().getDisk(id, disk) != RET_SUCCESS)
        return false;
    m_KestaCode = CLumoCStringCodec::fromAscii(disk.kestaCode);
    m_DestPath = normalizedBoxFolder(CLumoCStringCodec::fromAscii(disk.rootPath));
    m_DestFolderID = manager().getFolderID(disk.diskID, 0, CLumoCStringCodec::fromAscii(disk.diskName));
    return m_DestFolderID != kNoIdentifier;
}

void CLumoUploadRunnable::fillAuthMsg()
{
    m_AuthMsg.set_data_class(0);
    m_AuthMsg.set_user_name(manager().roleName().toStdString());
    m_AuthMsg.set_auth_flag(m_AuthFlag);
    m_AuthMsg.set_auth_mode(1);
    m_AuthMsg.set_folder_id(m_DestFolderID);
    if (m_ExtraID != kNoIdentifier)
        m_AuthMsg.set_extra_id(m_ExtraID);
    if (!m_RelativePath.isEmpty())
        m_AuthMsg.set_relative_path(m_RelativePath.toStdString());
}

void CLumoUploadRunnable::run()
{
    const QString name = lastName(m_LocalPath);
    m_TaskID = name + QUuid::createUuid().toString();
    report(0, 0);
    m_Channel = manager().newChannel(m_KestaIP);
    if (!m_Channel) {
        report(transfercodes::kNoChannel, 0);
        return;
    }
    const QString below = m_RelativePath.isEmpty() ? name : m_RelativePath + QLatin1Char('/') + name;
    const QString target = joined(m_DestPath, below);
    const boost::function<void(const std::string&, int, int)> progress =
        boost::bind(&uploadCallback, _1, _2, _3, CLumoCStringCodec::toStdString(m_TaskID), m_Callback);
    if (bulkhaul::Upload(m_Channel, target.toStdString(), m_LocalPath.toStdString(), !m_Overwrite, progress,
                         &m_AuthMsg, nullptr) != 0) {
        report(transfercodes::kTransferFailed, 0);
        LUMO_UPLOAD_LOG("CLumoUploadRunnable::run", "bulkhaul::Upload Failed!");
    }
    hubline::ReleaseChannel(CLumoCStringCodec::toStdString(m_KestaIP)); // the address that newChannel got
}

void CLumoUploadRunnable::report(int code, int percent) const
{
    if (m_Callback)
        m_Callback(CLumoCStringCodec::toStdString(m_TaskID).c_str(), transfercodes::kUploading, code,
                   percent);
}

void uploadCallback(const std::string& rpcTaskID, int code, int percent, const std::string& taskID,
                    TransferCallback callback) // NOLINT(performance-unnecessary-value-param)
{
    LUMO_UPLOAD_LOG("uploadCallback", "Upload RPC TaskID : %s, Inner TaskID : %s", rpcTaskID.c_str(),
                    taskID.c_str());
    if (callback)
        callback(taskID.c_str(), transfercodes::kUploading, code, percent);
}

#undef LUMO_UPLOAD_LOG
