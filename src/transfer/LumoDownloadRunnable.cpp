#include "transfer/LumoDownloadRunnable.h"

#include "core/GbkTexts.h"
#include "core/LogLine.h"
#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/components/hubline/Hubline.h"
#include "lumo/components/platform/PathComponent.h"
#include "lumo/core/CStringCodec.h"
#include "lumo/core/Identifier.h"
#include "lumo/core/LumoDataMgr.h"
#include "lumo/transfer/TransferCodes.h"
#include "transfer/TransferManager.h"
#include "transfer/TransferPaths.h"

#include <QDir>
#include <QFileInfo>
#include <QUuid>
#include <boost/bind.hpp>

#include <algorithm>

#define LUMO_DOWNLOAD_LOG(function, ...) writeLogLine("LumoDownloadRunnable", function, __LINE__, __VA_ARGS__)

using namespace transferpaths;
using platform::isPathComponent;

namespace {

/// The most nested folders of a walk through the catalogue, and the most files and folders in it: a catalogue
/// that lists more does not end.
constexpr int kDeepest = 256;
constexpr qint64 kMostEntries = qint64(1) << 24;

const char kFetchDownload[] = "CLumoDownloadRunnable::fetchDownloadInformation";
const char kRun[] = "CLumoDownloadRunnable::run";
const char kDownload[] = "CLumoDownloadRunnable::download";
const char kCopyFile[] = "CLumoDownloadRunnable::copyFile";
const char kCopyDirectory[] = "CLumoDownloadRunnable::copyDirectory";

/// A text of a catalogue record.
QString recordText(const char* text)
{
    return CLumoCStringCodec::fromAscii(text);
}

std::string logText(const QString& text)
{
    return CLumoCStringCodec::toStdString(text);
}

/// Whether `path` is `folder` or lies below it; both are canonical.
bool isWithin(const QString& path, const QString& folder)
{
    return joined(path, QString()).startsWith(joined(folder, QString()));
}

/// Whether both name one file, which is lost if `target` is removed; a link to it can go.
bool isSameFile(const QFileInfo& target, const QFileInfo& source)
{
    if (target.isSymLink())
        return target.fileName() == source.fileName() &&
               target.dir().canonicalPath() == source.dir().canonicalPath();
    return target.canonicalFilePath() == source.canonicalFilePath();
}

} // namespace

CLumoDownloadRunnable::CLumoDownloadRunnable(bool overwrite, TransferCallback callback, bool byCatalogue)
    : m_Callback(std::move(callback)),
      m_ByCatalogue(byCatalogue),
      m_Overwrite(overwrite),
      m_SourceKind(-1),
      m_SourceID(kNoIdentifier)
{
    if (manager().m_PathConvert)
        m_PathPattern = QRegExp(QLatin1Char('^') + manager().m_ConvertFrom);
}

CLumoDownloadRunnable::CLumoDownloadRunnable(const QString& localDir, const QString& sourcePath,
                                             const QString& address, bool overwrite,
                                             TransferCallback callback)
    : CLumoDownloadRunnable(overwrite, std::move(callback), false)
{
    m_KestaIP = address;
    m_LocalDir = normalizedLocalPath(localDir);
    m_SourcePath = normalizedBoxPath(sourcePath);
    m_Name = lastName(m_SourcePath);
    m_AuthMsg.set_data_class(1);
    m_AuthMsg.set_user_name(manager().roleName().toStdString());
}

bool CLumoDownloadRunnable::fetchDownloadInformation(const QString& localDir,
                                                     const QPair<int, unsigned int>& source)
{
    switch (source.first) {
    case DATA_TYPE_FILE:
        if (!findFile(source.second))
            return false;
        break;
    case DATA_TYPE_FOLDER:
        if (!findFolder(source.second))
            return false;
        break;
    case DATA_TYPE_DISK:
        if (!findDisk(source.second))
            return false;
        break;
    default:
        LUMO_DOWNLOAD_LOG(kFetchDownload, gbktexts::kSourceWrong);
        return false;
    }
    m_KestaIP = manager().getKestaIP(m_KestaCode);
    if (m_KestaIP.isEmpty()) {
        LUMO_DOWNLOAD_LOG(kFetchDownload, gbktexts::kBoxNotFound, logText(m_KestaCode).c_str());
        return false;
    }
    m_LocalDir = normalizedLocalPath(localDir);
    m_AuthMsg.set_data_class(0);
    m_AuthMsg.set_user_name(manager().roleName().toStdString());
    return true;
}

bool CLumoDownloadRunnable::findFile(unsigned int id)
{
    tagFileTable file = tagFileTable();
    if (manager().getFile(id, file) == RET_SUCCESS)
        m_SourcePath = manager().getFileFullPath(id, m_KestaCode);
    if (m_SourcePath.isEmpty()) {
        LUMO_DOWNLOAD_LOG(kFetchDownload, gbktexts::kSourceNotFound, "File", static_cast<int>(id));
        return false;
    }
    m_Name = recordText(file.fileName);
    m_SourceKind = DATA_TYPE_FILE;
    m_SourceID = id;
    return true;
}

bool CLumoDownloadRunnable::findFolder(unsigned int id)
{
    tagFolderTable folder = tagFolderTable();
    const bool found = manager().getFolder(id, folder) == RET_SUCCESS;
    if (found && folder.parentID == 0) // the top folder of its disk
        return findDisk(folder.diskID);
    if (found)
        m_SourcePath = manager().getFolderFullPath(id, m_KestaCode);
    if (m_SourcePath.isEmpty()) {
        LUMO_DOWNLOAD_LOG(kFetchDownload, gbktexts::kSourceNotFound, "Folder", static_cast<int>(id));
        return false;
    }
    m_Name = recordText(folder.folderName);
    m_SourceKind = DATA_TYPE_FOLDER;
    m_SourceID = id;
    return true;
}

bool CLumoDownloadRunnable::findDisk(unsigned int id)
{
    tagDiskTable disk = tagDiskTable();
    if (manager().getDisk(id, disk) != RET_SUCCESS) {
        LUMO_DOWNLOAD_LOG(kFetchDownload, gbktexts::kSourceNotFound, "Disk", static_cast<int>(id));
        return false;
    }
    m_KestaCode = recordText(disk.kestaCode);
    m_SourcePath = normalizedBoxPath(recordText(disk.rootPath));
    m_Name = recordText(disk.diskName);
    m_SourceKind = DATA_TYPE_DISK;
    m_SourceID = id;
    return true;
}

void CLumoDownloadRunnable::run()
{
    m_TaskID = m_Name + QUuid::createUuid().toString();
    report(0, 0);
    m_Channel = manager().newChannel(m_KestaIP);
    if (!m_Channel) {
        report(transfercodes::kNoChannel, 0);
        return;
    }
    if (m_ByCatalogue)
        walkCatalogue();
    else if (manager().m_PathConvert)
        copyConvertedPath();
    else
        downloadPath();
    hubline::ReleaseChannel(CLumoCStringCodec::toStdString(m_KestaIP)); // the address that newChannel got
}

void CLumoDownloadRunnable::walkCatalogue()
{
    if (download(m_LocalDir, m_SourceKind, m_SourceID, m_Overwrite))
        report(0, 100);
    else
        LUMO_DOWNLOAD_LOG(kRun, "download Failed!");
}

void CLumoDownloadRunnable::copyConvertedPath()
{
    m_SourcePath.replace(m_PathPattern, manager().m_ConvertTo);
    const QFileInfo source(m_SourcePath);
    int code = 0;
    if (source.isFile()) {
        if (!copyFile(m_SourcePath, m_LocalDir, m_Name, m_Overwrite))
            code = transfercodes::kFileNotCopied;
    } else if (source.isDir()) {
        if (!copyDirectory(m_SourcePath, m_LocalDir, m_Name, m_Overwrite))
            code = transfercodes::kFolderNotMade;
    } else {
        LUMO_DOWNLOAD_LOG(kRun, "Copy File Failed : %s!", logText(m_SourcePath).c_str());
        code = transfercodes::kFileNotCopied;
    }
    report(code, code == 0 ? 100 : 0);
}

void CLumoDownloadRunnable::downloadPath()
{
    // A "/" is appended also to the empty path, which is "." only where files are copied or walked.
    const QString target = joined(m_LocalDir.isEmpty() ? QStringLiteral("/") : m_LocalDir, m_Name);
    const boost::function<void(const std::string&, int, int)> progress =
        boost::bind(&downloadCallBack, _1, _2, _3, CLumoCStringCodec::toStdString(m_TaskID), m_Callback);
    if (bulkhaul::Download(m_Channel, m_SourcePath.toStdString(), target.toStdString(), !m_Overwrite,
                           progress, &m_AuthMsg, nullptr) == 0)
        return;
    report(transfercodes::kTransferFailed, 0);
    LUMO_DOWNLOAD_LOG(kRun, "bulkhaul::Download Failed!");
}

bool CLumoDownloadRunnable::download(const QString& localDir, int kind, unsigned int id, bool overwrite)
{
    switch (kind) {
    case DATA_TYPE_FILE:
        return downloadFile(localDir, id, overwrite);
    case DATA_TYPE_FOLDER:
        return downloadFolder(localDir, id, overwrite);
    default:
        return downloadDisk(localDir, id, overwrite);
    }
}

bool CLumoDownloadRunnable::downloadFile(const QString& localDir, unsigned int id, bool overwrite)
{
    QString kestaCode;
    QString fullPath = manager().getFileFullPath(id, kestaCode);
    if (fullPath.isEmpty())
        return fail(transfercodes::kNotInCatalogue);
    const QString name = lastName(fullPath);
    if (manager().m_PathConvert) {
        fullPath.replace(m_PathPattern, manager().m_ConvertTo);
        return copyFile(fullPath, localDir, name, overwrite) || fail(transfercodes::kFileNotCopied);
    }
    const QString target = joined(localDir, name);
    const bulkhaul::SourcesAreFiles option;
    const int result = isPathComponent(name.toStdString())
                           ? bulkhaul::Download(m_Channel, fullPath.toStdString(), target.toStdString(),
                                                !overwrite, bulkhaul::ProgressFunction(), &m_AuthMsg, nullptr)
                           : transfercodes::kFileNotCopied;
    if (result == 0)
        return true;
    LUMO_DOWNLOAD_LOG(kDownload, "bulkhaul::Download Failed : %s", logText(target).c_str());
    return fail(result);
}

bool CLumoDownloadRunnable::downloadFolder(const QString& localDir, unsigned int id, bool overwrite)
{
    tagFolderTable folder = tagFolderTable();
    if (manager().getFolder(id, folder) != RET_SUCCESS) {
        LUMO_DOWNLOAD_LOG(kDownload, "getFolder Failed,ID(%d)", static_cast<int>(id));
        return fail(transfercodes::kNotInCatalogue);
    }
    const QString name = recordText(folder.folderName);
    return makeFolder(localDir, name) && downloadFolderContent(id, joined(localDir, name), overwrite);
}

bool CLumoDownloadRunnable::downloadDisk(const QString& localDir, unsigned int id, bool overwrite)
{
    tagDiskTable disk = tagDiskTable();
    if (manager().getDisk(id, disk) != RET_SUCCESS) {
        LUMO_DOWNLOAD_LOG(kDownload, "getDisk Failed,ID(%d)", static_cast<int>(id));
        return fail(transfercodes::kNotInCatalogue);
    }
    const QString name = recordText(disk.diskName);
    const unsigned int rootID = manager().getFolderID(disk.diskID, 0, name);
    if (rootID == kNoIdentifier) {
        LUMO_DOWNLOAD_LOG(kDownload, "getFolderID Failed,DiskID(%d) ParentID(0) Name(%s)",
                          static_cast<int>(disk.diskID), logText(name).c_str());
        return fail(transfercodes::kNotInCatalogue);
    }
    return makeFolder(localDir, name) && downloadFolderContent(rootID, joined(localDir, name), overwrite);
}

bool CLumoDownloadRunnable::makeFolder(const QString& localDir, const QString& name)
{
    if (m_FoldersDeep < kDeepest && haveFolder(localDir, name))
        return true;
    LUMO_DOWNLOAD_LOG(kDownload, "Dist Dir doesn't exist and mkdir Failed : %s",
                      logText(joined(localDir, name)).c_str());
    return fail(transfercodes::kFolderNotMade);
}

bool CLumoDownloadRunnable::haveFolder(const QString& localDir, const QString& name) const
{
    if (!isPathComponent(name.toStdString()))
        return false;
    const QString path = joined(localDir, name);
    const QFileInfo folder(path);
    if (!folder.exists())
        return QDir().mkdir(path);
    // Only a link leads elsewhere. Resolving every folder's path takes minutes in a very deep tree.
    return !folder.isSymLink() || isWithin(folder.canonicalFilePath(), QDir(m_LocalDir).canonicalPath());
}

bool CLumoDownloadRunnable::downloadFolderContent(unsigned int folderID, const QString& localPath,
                                                  bool overwrite)
{
    QList<tagFileTable> files;
    QList<tagFolderTable> folders;
    if (manager().getFileByParentID(folderID, files) == RET_FAILED ||
        manager().getFolderByParentID(folderID, folders) == RET_FAILED)
        return fail(transfercodes::kNotInCatalogue);
    m_EntriesListed += files.size() + folders.size();
    if (m_EntriesListed > kMostEntries)
        return fail(transfercodes::kNotInCatalogue);
    ++m_FoldersDeep;
    for (const tagFileTable& file : qAsConst(files))
        if (!download(localPath, DATA_TYPE_FILE, file.fileID, overwrite))
            return false;
    for (const tagFolderTable& folder : qAsConst(folders))
        if (!download(localPath, DATA_TYPE_FOLDER, folder.folderID, overwrite))
            return false;
    --m_FoldersDeep;
    return true;
}

bool CLumoDownloadRunnable::copyFile(const QString& sourcePath, const QString& destDir, const QString& name,
                                     bool overwrite)
{
    const QString target = joined(destDir, name);
    if (isPathComponent(name.toStdString())) {
        if (QFile::exists(target)) {
            if (!overwrite || isSameFile(QFileInfo(target), QFileInfo(sourcePath)))
                return true;
            if (!QFile::remove(target)) {
                LUMO_DOWNLOAD_LOG(kCopyFile, "Remove File Failed : %s!", logText(target).c_str());
                return false;
            }
        }
        // A pipe or a device may never end.
        if (QFileInfo(sourcePath).isFile() && QFile::copy(sourcePath, target))
            return true;
    }
    LUMO_DOWNLOAD_LOG(kCopyFile, "Copy File Failed : %s!", logText(target).c_str());
    return false;
}

bool CLumoDownloadRunnable::copyDirectory(const QString& sourcePath, const QString& destDir,
                                          const QString& name, bool overwrite)
{
    const QDir source(sourcePath);
    const QString next = joined(destDir, name);
    if (neverEnds(source.canonicalPath(), destDir) || !haveFolder(destDir, name)) {
        LUMO_DOWNLOAD_LOG(kCopyDirectory, "mkdir Failed : %s!", logText(next).c_str());
        return false;
    }
    m_FoldersUnderWay.append(source.canonicalPath());
    const QFileInfoList entries =
        source.entryInfoList(QDir::Dirs | QDir::Files | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QFileInfo& entry : entries) {
        const bool copied = entry.isDir() ? copyDirectory(entry.filePath(), next, entry.fileName(), overwrite)
                                          : copyFile(entry.filePath(), next, entry.fileName(), overwrite);
        if (!copied)
            return false;
    }
    m_FoldersUnderWay.removeLast();
    return true;
}

bool CLumoDownloadRunnable::neverEnds(const QString& source, const QString& destDir) const
{
    return isWithin(QDir(destDir).canonicalPath(), source) ||
           std::any_of(m_FoldersUnderWay.cbegin(), m_FoldersUnderWay.cend(),
                       [&](const QString& folder) { return isWithin(folder, source); });
}

void CLumoDownloadRunnable::report(int code, int percent) const
{
    if (m_Callback)
        m_Callback(CLumoCStringCodec::toStdString(m_TaskID).c_str(), transfercodes::kDownloading, code,
                   percent);
}

bool CLumoDownloadRunnable::fail(int code) const
{
    report(code, 0);
    return false;
}

void downloadCallBack(const std::string& rpcTaskID, int code, int percent, const std::string& taskID,
                      TransferCallback callback) // NOLINT(performance-unnecessary-value-param)
{
    static const char function[] = "downloadCallBack";
    LUMO_DOWNLOAD_LOG(function, "Upload RPC TaskID : %s, Inner TaskID : %s", rpcTaskID.c_str(),
                      taskID.c_str());
    if (callback)
        callback(taskID.c_str(), transfercodes::kDownloading, code, percent);
    else if (code != 0)
        LUMO_DOWNLOAD_LOG(function, "Download Task is Failed!");
    else if (percent == 0)
        LUMO_DOWNLOAD_LOG(function, "Download Task is Started!");
    else if (percent == 100)
        LUMO_DOWNLOAD_LOG(function, "Download Task is Successed!");
    else
        LUMO_DOWNLOAD_LOG(function, "Download Task is Running!");
}

#undef LUMO_DOWNLOAD_LOG
