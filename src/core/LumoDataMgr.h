#ifndef LUMO_CORE_LUMODATAMGR_H
#define LUMO_CORE_LUMODATAMGR_H

#include "catalog/StorageRecords.h"
#include "components/platform/Export.h"
#include "core/LumoDataTypes.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QThreadPool>
#include <boost/shared_ptr.hpp>

#include <atomic>
#include <mutex>
#include <string>

namespace wirecall {
class RpcChannel;
}

namespace ledgerserver {
class DataAddressBean;
class FileTableBean;
class SrcTableBean;
} // namespace ledgerserver

/// The client of a geospatial data centre, and the only way into this library.
///
/// Get the one object with GetSingleTon or GetSinglePton, call initDataMgr once, then anything from any
/// thread. Every remote call blocks its caller for up to the time limit; a method asks the centre anew and
/// retries nothing. Failures are return values; the reason goes to CLumoLogger alone. Out-parameters are
/// written only on success and lists are appended to; a paged query (so marked) empties its list when a
/// page fails. Identifiers are unsigned, 0xFFFFFFFF means none. Texts in records are in the system code
/// page (see components/platform/CodePage.h).
class LUMO_EXPORT CLumoDataMgr : public QObject
{
    Q_OBJECT

public:
    // Singleton and start-up

    /// The one object, made on first use by any thread and freed when the library is unloaded. No new call
    /// may begin after that.
    static CLumoDataMgr& GetSingleTon();
    static CLumoDataMgr* GetSinglePton();

    /// Stores the channels and the caller's identity, starts the bulk transfer client and resolves company
    /// and user. The channels stay the application's and must outlive all calls. The texts must not be
    /// null and are in the code page of CLumoCStringCodec. `timeout` is the limit of every remote call in
    /// milliseconds, 0 for none. Must not run beside any other method. A failure undoes nothing.
    ENUM_INIT_ERROR_CODE initDataMgr(wirecall::RpcChannel* ledgerChannel, wirecall::RpcChannel* forgeChannel,
                                     const char* token, const char* roleName, const char* companyNo,
                                     unsigned int timeout);

    /// The company's identifier, 0xFFFFFFFF until initDataMgr resolved it.
    unsigned int companyID() const;
    /// The user name given to initDataMgr.
    QString roleName() const;

    // Disks and start-up lookups

    ENUM_RET_TYPE getDisk(unsigned int id, tagDiskTable& disk);
    ENUM_RET_TYPE getDisk(const QString& name, tagDiskTable& disk);
    /// The disks of the caller's company.
    ENUM_RET_TYPE getDisk(QList<tagDiskTable>& disks);

    /// Identifier of a company by its number; 0xFFFFFFFF on any failure.
    unsigned int getCompanyID(const QString& companyNo);
    /// Identifier of a user by its name; 0xFFFFFFFF on any failure.
    unsigned int getRoleID(const QString& roleName);

    // Folders and files

    ENUM_RET_TYPE getFolder(unsigned int folderID, tagFolderTable& folder);
    /// Identifier of the folder of that name below that parent (0: top folder); 0xFFFFFFFF on any failure.
    unsigned int getFolderID(unsigned int diskID, unsigned int parentID, const QString& name);
    /// Paged.
    ENUM_RET_TYPE getFolderByParentID(unsigned int parentID, QList<tagFolderTable>& folders);
    /// Paged.
    ENUM_RET_TYPE getFolderByDataAndComment(unsigned int dataID, unsigned int commentID,
                                            QList<tagFolderTable>& folders);
    ENUM_RET_TYPE getFile(unsigned int fileID, tagFileTable& file);
    /// All files of the identifiers, in one call.
    ENUM_RET_TYPE getFile(const QList<unsigned int>& fileIDs, QList<tagFileTable>& files);
    ENUM_RET_TYPE getFileByName(unsigned int parentID, const QString& name, tagFileTable& file);
    /// Paged.
    ENUM_RET_TYPE getFileByParentID(unsigned int parentID, QList<tagFileTable>& files);
    /// Paged.
    ENUM_RET_TYPE getFileByDataAndComment(unsigned int dataID, unsigned int commentID,
                                          QList<tagFileTable>& files);

protected:
    CLumoDataMgr();
    ~CLumoDataMgr() override;

    /// Opens a channel to `address` with the manager's token; empty on failure.
    boost::shared_ptr<wirecall::RpcChannel> newChannel(const QString& address);

    /// Path on the storage box and, in `kestaCode`, the code of that box. Empty on failure, with
    /// `kestaCode` untouched.
    QString getFileFullPath(unsigned int fileID, QString& kestaCode);
    QString getFolderFullPath(unsigned int folderID, QString& kestaCode);

    // Conversions: an absent integer becomes 0xFFFFFFFF, an absent text is zero-filled.

    static void getDiskFromBean(const ledgerserver::DataAddressBean& bean, tagDiskTable& disk);
    static void getFolderFromBean(const ledgerserver::SrcTableBean& bean, tagFolderTable& folder);
    static void getFileFromBean(const ledgerserver::FileTableBean& bean, tagFileTable& file);

    static std::atomic<CLumoDataMgr*> m_Instance;

private:
    /// Frees the singleton when the library is unloaded.
    class CLumoFreeSelf
    {
    public:
        ~CLumoFreeSelf();
    };

    friend class CallFrame;

    static void _Thread_Safe_Lock();
    static void _Thread_Safe_UnLock();

    static std::mutex m_SafeMutex;
    static CLumoFreeSelf m_FreeSingleTon;

    unsigned int m_Timeout;
    wirecall::RpcChannel* m_LedgerChannel;
    wirecall::RpcChannel* m_ForgeChannel;
    std::string m_Token;
    QString m_CompanyNo;
    QString m_RoleName;
    unsigned int m_RoleID;
    unsigned int m_CompanyID;
    QThreadPool m_ThreadPool;
};

#endif
