#ifndef LUMO_TRANSFER_LUMOUPLOADRUNNABLE_H
#define LUMO_TRANSFER_LUMOUPLOADRUNNABLE_H

#include "kestaserver.pb.h"
#include "lumo/transfer/TransferCallback.h"

#include <QPair>
#include <QRunnable>
#include <QString>
#include <boost/shared_ptr.hpp>

#include <string>

namespace wirecall {
class RpcChannel;
}

/// One upload of a local file or folder to a disk or folder of the catalogue, in one call of the bulk
/// transfer client over a channel of its own.
///
/// Made and prepared on the caller's thread, run and deleted by the thread pool. It gets all that it
/// needs of the manager from the singleton.
class CLumoUploadRunnable : public QRunnable
{
public:
    /// `relativePath` is a path below the destination, or empty.
    CLumoUploadRunnable(const QString& relativePath, bool overwrite, bool authFlag, unsigned int extraID,
                        TransferCallback callback);

    /// Resolves the destination and its storage box and fills the message to the box. False, with the
    /// reason in the log, when the task can't be run.
    bool fetchUploadInformation(const QString& localPath, const QPair<int, unsigned int>& dest);

    void run() override;

private:
    bool findFolder(unsigned int id);
    bool findDisk(unsigned int id);
    void fillAuthMsg();
    void report(int code, int percent) const;

    TransferCallback m_Callback;
    QString m_TaskID;
    bool m_AuthFlag;
    bool m_Overwrite;
    kestaserver::UploadAuthMsg m_AuthMsg;
    unsigned int m_DestFolderID;
    unsigned int m_ExtraID;
    QString m_LocalPath;
    QString m_DestPath;
    QString m_RelativePath;
    QString m_KestaIP;
    QString m_KestaCode;
    boost::shared_ptr<wirecall::RpcChannel> m_Channel;
};

/// Passes a report of the bulk transfer client on to the application. All that it needs is bound by value, so
/// it may outlive the task.
void uploadCallback(const std::string& rpcTaskID, int code, int percent, const std::string& taskID,
                    TransferCallback callback);

#endif
