#include "lumo/core/CStringCodec.h"
#include "lumo/core/LumoDataMgr.h"
#include "transfer/LumoDownloadRunnable.h"
#include "transfer/LumoUploadRunnable.h"

#include <memory>

// Transfers

// NOLINTBEGIN(performance-unnecessary-value-param): the interface passes callbacks by value.

bool CLumoDataMgr::upload(const QString& localPath, const QPair<int, unsigned int>& dest,
                          unsigned int extraID, bool overwrite, TransferCallback callback)
{
    auto task = std::make_unique<CLumoUploadRunnable>(QString(), overwrite, true, extraID, callback);
    if (!task->fetchUploadInformation(localPath, dest))
        return false;
    m_ThreadPool.start(task.release(), 0);
    return true;
}

bool CLumoDataMgr::download(const QString& localDir, const QPair<int, unsigned int>& source, bool overwrite,
                            TransferCallback callback)
{
    auto task = std::make_unique<CLumoDownloadRunnable>(overwrite, callback, true);
    if (!task->fetchDownloadInformation(localDir, source))
        return false;
    m_ThreadPool.start(task.release(), 0);
    return true;
}

bool CLumoDataMgr::downloadBySoftID(const char* localDir, const char* address, const char* softID,
                                    const char* versionNo, bool overwrite, TransferCallback callback)
{
    const QString path =
        getAppFullPathBySoftID(CLumoCStringCodec::fromAscii(softID), CLumoCStringCodec::fromAscii(versionNo));
    return downloadPath(localDir, address, path, overwrite, callback);
}

bool CLumoDataMgr::downloadByAppID(const char* localDir, const char* address, const char* appID,
                                   const char* versionNo, bool overwrite, TransferCallback callback)
{
    const QString path =
        getAppFullPathByAppID(CLumoCStringCodec::fromAscii(appID), CLumoCStringCodec::fromAscii(versionNo));
    return downloadPath(localDir, address, path, overwrite, callback);
}

// NOLINTEND(performance-unnecessary-value-param)

bool CLumoDataMgr::downloadPath(const char* localDir, const char* address, const QString& path,
                                bool overwrite, const TransferCallback& callback)
{
    if (path.isEmpty())
        return false;
    m_ThreadPool.start(new CLumoDownloadRunnable(CLumoCStringCodec::fromAscii(localDir), path,
                                                 CLumoCStringCodec::fromAscii(address), overwrite, callback),
                       0);
    return true;
}
