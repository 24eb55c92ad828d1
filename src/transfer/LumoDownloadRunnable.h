#ifndef LUMO_TRANSFER_LUMODOWNLOADRUNNABLE_H
#define LUMO_TRANSFER_LUMODOWNLOADRUNNABLE_H

#include "kestaserver.pb.h"
#include "lumo/transfer/TransferCallback.h"

#include <QPair>
#include <QRegExp>
#include <QRunnable>
#include <QString>
#include <QStringList>
#include <boost/shared_ptr.hpp>

#include <string>

namespace wirecall {
class RpcChannel;
}

/// One download: of a place of the catalogue, walked record by record, or of one path on a storage box.
/// With path conversion its files are copied from the path under which this machine sees them; otherwise
/// the bulk transfer client moves them over a channel of the task's own.
///
/// Made and prepared on the caller's thread, run and deleted by the thread pool. It gets all that it
/// needs of the manager from the singleton.
class CLumoDownloadRunnable : public QRunnable
{
public:
    /// A download by catalogue; fetchDownloadInformation finds the source.
    CLumoDownloadRunnable(bool overwrite, TransferCallback callback, bool byCatalogue);
    /// A download of `sourcePath` from the storage box at `address`.
    CLumoDownloadRunnable(const QString& localDir, const QString& sourcePath, const QString& address,
                          bool overwrite, TransferCallback callback);

    /// Resolves a place of the catalogue and its storage box. False, with the reason in the log, when the
    /// task can't be run.
    bool fetchDownloadInformation(const QString& localDir, const QPair<int, unsigned int>& source);

    void run() override;

private:
    bool findFile(unsigned int id);
    bool findFolder(unsigned int id);
    bool findDisk(unsigned int id);

    /// The three ways to move the source. Each reports its end to the callback.
    void walkCatalogue();
    void copyConvertedPath();
    void downloadPath();

    /// Moves one place of the catalogue into `localDir`. Reports a failure to the callback.
    bool download(const QString& localDir, int kind, unsigned int id, bool overwrite);
    bool downloadFile(const QString& localDir, unsigned int id, bool overwrite);
    bool downloadFolder(const QString& localDir, unsigned int id, bool overwrite);
    bool downloadDisk(const QString& localDir, unsigned int id, bool overwrite);
    /// The files of a folder, then its sub-folders.
    bool downloadFolderContent(unsigned int folderID, const QString& localPath, bool overwrite);
    /// As haveFolder, but reports a failure to the callback.
    bool makeFolder(const QString& localDir, const QString& name);
    /// Makes the folder unless it exists. Returns false also for a name that leads out of the target folder.
    bool haveFolder(const QString& localDir, const QString& name) const;

    bool copyFile(const QString& sourcePath, const QString& destDir, const QString& name, bool overwrite);
    bool copyDirectory(const QString& sourcePath, const QString& destDir, const QString& name,
                       bool overwrite);
    /// Whether the folder `source`, a canonical path, holds the target or a folder that is being copied: it
    /// was reached through a link, or the target lies in it.
    bool neverEnds(const QString& source, const QString& destDir) const;

    void report(int code, int percent) const;
    /// Reports a failure to the callback and returns false.
    bool fail(int code) const;

    TransferCallback m_Callback;
    QString m_TaskID;
    bool m_ByCatalogue;
    bool m_Overwrite;
    QRegExp m_PathPattern; ///< the head of a storage box path that path conversion replaces
    kestaserver::DownloadAuthMsg m_AuthMsg;
    int m_SourceKind;
    unsigned int m_SourceID;
    QString m_SourcePath;
    QString m_LocalDir;
    QString m_Name;
    QString m_KestaIP;
    QString m_KestaCode;
    boost::shared_ptr<wirecall::RpcChannel> m_Channel;
    int m_FoldersDeep = 0;         ///< nested folders that the walk is in
    qint64 m_EntriesListed = 0;    ///< files and folders of all folders of the walk so far
    QStringList m_FoldersUnderWay; ///< canonical paths of the nested folders that copyDirectory is in
};

/// Passes a report of the bulk transfer client on to the application, or logs it when `callback` is empty.
/// All that it needs is bound by value, so it may outlive the task.
void downloadCallBack(const std::string& rpcTaskID, int code, int percent, const std::string& taskID,
                      TransferCallback callback);

#endif
