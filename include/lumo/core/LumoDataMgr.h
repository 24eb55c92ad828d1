#ifndef LUMO_CORE_LUMODATAMGR_H
#define LUMO_CORE_LUMODATAMGR_H

#include "lumo/catalog/ImageData.h"
#include "lumo/catalog/QueryCondition.h"
#include "lumo/catalog/StorageRecords.h"
#include "lumo/components/platform/Export.h"
#include "lumo/core/LumoDataTypes.h"
#include "lumo/core/ServiceMessages.h"
#include "lumo/directory/VersionRecords.h"
#include "lumo/operations/LumoFilterFile.h"
#include "lumo/registration/CommentRecords.h"
#include "lumo/transfer/TransferCallback.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QThreadPool>
#include <QVector>
#include <boost/shared_ptr.hpp>

#include <atomic>
#include <mutex>
#include <string>

template <class Record>
struct RecordKind;

/// The client of a geospatial data centre, and the only way into this library.
///
/// Get the one object with GetSingleTon or GetSinglePton, call initDataMgr once, then call any method from
/// any thread. A remote call blocks its caller for up to the time limit, except the calls that are answered
/// by signal. Nothing is cached and nothing is retried. Failures are return values; the reason is only logged
/// (CLumoLogger). Out-parameters are written only on success. Lists are appended to; a query that is marked
/// "Paged" empties its list when a page fails. Identifiers are unsigned, 0xFFFFFFFF (kNoIdentifier) means
/// none. Texts in records are in the system code page (lumo/components/platform/CodePage.h).
class LUMO_EXPORT CLumoDataMgr : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    // Raised on a thread of the RPC runtime. A slot that is connected directly runs there too: it must be
    // short, must not wait for another signal and must not keep the reference. For a queued connection the
    // application registers the types first, see LumoFilterFile.h.

    /// The image passed; it is the object that analyzeImage was given.
    void reqAnalyzeImageFinished(const CLumoFilterFile& filter);
    /// Those of the images that passed, perhaps none; not raised when the call as a whole failed.
    void reqAnalyzeImagesFinished(const QList<CLumoFilterFile>& listFilter);
    /// The copy is done; the text is the one that fileCopy was given.
    void reqFileCopyFinished(const QString& strFile);

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

    // Start-up lookups

    /// Identifier of a company by its number; 0xFFFFFFFF on any failure.
    unsigned int getCompanyID(const QString& companyNo);
    /// Identifier of a user by its name; 0xFFFFFFFF on any failure.
    unsigned int getRoleID(const QString& roleName);

    // Disks

    ENUM_RET_TYPE getDisk(unsigned int id, tagDiskTable& disk);
    ENUM_RET_TYPE getDisk(const QString& name, tagDiskTable& disk);
    /// The disks of the caller's company.
    ENUM_RET_TYPE getDisk(QList<tagDiskTable>& disks);

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

    // Data projects and types
    //
    // `dataId` is the identifier of a data project.

    ENUM_RET_TYPE getData(unsigned int dataId, tagDataTable& data);
    /// The project of that name of the caller's company.
    ENUM_RET_TYPE getData(const QString& name, tagDataTable& data);
    /// The projects of the caller's company. Paged.
    ENUM_RET_TYPE getData(QList<tagDataTable>& data);
    /// The same as a list of any kinds. Paged.
    ENUM_RET_TYPE getData(QList<tagImageData>& data);
    ENUM_RET_TYPE getDataType(unsigned int typeId, tagTypeTable& type);
    /// The type of that name in a project.
    ENUM_RET_TYPE getDataType(unsigned int dataId, const QString& name, tagTypeTable& type);
    ENUM_RET_TYPE getDataTypeByDataID(unsigned int dataId, QList<tagTypeTable>& types);
    ENUM_RET_TYPE getDataTypeByDataID(unsigned int dataId, QList<tagImageData>& types);

    // Images, products and control data
    //
    // `typeId` is the identifier of a data type, `mark` that of an image comment. The queries by type and by
    // project are paged. Those by project and mark make one call, and empty their list when the centre
    // answers with an error or with nothing. Records are in the centre's order.

    // Frame photographs

    ENUM_RET_TYPE getKFImage(unsigned int id, tagKFImageTable& record);
    ENUM_RET_TYPE getKFImageByTypeID(unsigned int typeId, QList<tagKFImageTable>& records);
    ENUM_RET_TYPE getKFImageByTypeID(unsigned int typeId, QList<tagImageData>& images);
    ENUM_RET_TYPE getKFImageByDataID(unsigned int dataId, QList<tagKFImageTable>& records);
    ENUM_RET_TYPE getKFImageByDataAndMark(unsigned int dataId, unsigned int mark,
                                          QList<tagKFImageTable>& records);

    // Satellite images

    ENUM_RET_TYPE getSatImage(unsigned int id, tagSatTable& record);
    ENUM_RET_TYPE getSatImageByTypeID(unsigned int typeId, QList<tagSatTable>& records);
    ENUM_RET_TYPE getSatImageByTypeID(unsigned int typeId, QList<tagImageData>& images);
    ENUM_RET_TYPE getSatImageByDataID(unsigned int dataId, QList<tagSatTable>& records);
    ENUM_RET_TYPE getSatByDataAndMark(unsigned int dataId, unsigned int mark, QList<tagSatTable>& records);

    // Airborne three-line images

    ENUM_RET_TYPE getAdsImage(unsigned int id, tagAdsTable& record);
    ENUM_RET_TYPE getAdsImageByTypeID(unsigned int typeId, QList<tagAdsTable>& records);
    ENUM_RET_TYPE getAdsImageByTypeID(unsigned int typeId, QList<tagImageData>& images);
    ENUM_RET_TYPE getAdsImageByDataID(unsigned int dataId, QList<tagAdsTable>& records);
    ENUM_RET_TYPE getAdsByDataAndMark(unsigned int dataId, unsigned int mark, QList<tagAdsTable>& records);

    // Control files and points

    ENUM_RET_TYPE getCtrlFile(unsigned int id, tagCtrlFileTable& record);
    ENUM_RET_TYPE getCtrlFileByTypeID(unsigned int typeId, QList<tagCtrlFileTable>& records);
    ENUM_RET_TYPE getCtrlFileByDataID(unsigned int dataId, QList<tagCtrlFileTable>& records);
    ENUM_RET_TYPE getCtrlPoint(unsigned int id, tagCtrlPointTable& point);
    /// The points of a control file. Paged.
    ENUM_RET_TYPE getCtrlPoint(unsigned int dqConID, QList<tagCtrlPointTable>& points);

    // Digital elevation models

    ENUM_RET_TYPE getDem(unsigned int id, tagDemTable& record);
    ENUM_RET_TYPE getDemByTypeID(unsigned int typeId, QList<tagDemTable>& records);
    ENUM_RET_TYPE getDemByTypeID(unsigned int typeId, QList<tagImageData>& images);
    ENUM_RET_TYPE getDemByDataID(unsigned int dataId, QList<tagDemTable>& records);
    ENUM_RET_TYPE getDemByDataAndMark(unsigned int dataId, unsigned int mark, QList<tagDemTable>& records);

    // Digital surface models

    ENUM_RET_TYPE getDsm(unsigned int id, tagDsmTable& record);
    ENUM_RET_TYPE getDsmByTypeID(unsigned int typeId, QList<tagDsmTable>& records);
    ENUM_RET_TYPE getDsmByTypeID(unsigned int typeId, QList<tagImageData>& images);
    ENUM_RET_TYPE getDsmByDataID(unsigned int dataId, QList<tagDsmTable>& records);
    ENUM_RET_TYPE getDsmByDataAndMark(unsigned int dataId, unsigned int mark, QList<tagDsmTable>& records);

    // Orthophotos

    ENUM_RET_TYPE getDom(unsigned int id, tagDomTable& record);
    ENUM_RET_TYPE getDomByTypeID(unsigned int typeId, QList<tagDomTable>& records);
    ENUM_RET_TYPE getDomByTypeID(unsigned int typeId, QList<tagImageData>& images);
    ENUM_RET_TYPE getDomByDataID(unsigned int dataId, QList<tagDomTable>& records);
    ENUM_RET_TYPE getDomByDataAndMark(unsigned int dataId, unsigned int mark, QList<tagDomTable>& records);

    // Line maps

    ENUM_RET_TYPE getDlg(unsigned int id, tagDlgTable& record);
    ENUM_RET_TYPE getDlgByTypeID(unsigned int typeId, QList<tagDlgTable>& records);
    ENUM_RET_TYPE getDlgByTypeID(unsigned int typeId, QList<tagImageData>& images);
    ENUM_RET_TYPE getDlgByDataID(unsigned int dataId, QList<tagDlgTable>& records);
    ENUM_RET_TYPE getDlgByDataAndMark(unsigned int dataId, unsigned int mark, QList<tagDlgTable>& records);

    // Search

    // Both searches leave their list as it was on every failure.

    /// The types of the caller's company that match the condition.
    ENUM_RET_TYPE searchDataType(const tagQueryCondition& condition, QList<tagTypeTable>& types);
    /// The images, products or control points of `type` that match the condition. The names of product types
    /// match in any case. RET_FAILED, without a call, when the condition names another project or type;
    /// RET_SUCCESS with nothing appended when the type's name is not that of a kind.
    ENUM_RET_TYPE searchByDataType(const tagTypeTable& type, const tagQueryCondition& condition,
                                   QList<tagImageData>& images);
    /// All images or products of `type`, paged. The names of product types are DEM, DSM, DOM and DLG.
    /// RET_FAILED when the type's name is not that of a kind, or is that of control points.
    ENUM_RET_TYPE getImageByType(const tagTypeTable& type, QList<tagImageData>& images);

    // Registration
    //
    // A record is registered by its kind, an ENUM_DATA_TYPE from data project to DLG as a number, and a text
    // of assignments: key='value' with single commas and no blanks between them, keys the names of the
    // record's fields. Every value is quoted; a value can't hold a comma. The text goes to the centre as it
    // is; checked here are its form and the keys that identify the record: of a project companyID and
    // projectName, of a type projectID and dataType, of a control point dqConID and conNumber, of the others
    // mainFileID.

    /// Registers a record and returns its identifier; 0xFFFFFFFF on any failure.
    unsigned int addImage(int type, const QString& text);
    /// Registers records of one kind, all or none, in one call; their identifiers are appended to `ids`.
    bool addImage(int type, const QStringList& texts, QList<unsigned int>& ids);

    // Links
    //
    // A link is between a data project and a folder or file. False when the centre refuses, and on any
    // failure.

    bool linkDataFolder(unsigned int dataID, unsigned int folderID);
    bool unlinkDataFolder(unsigned int dataID, unsigned int folderID);
    bool linkDataFile(unsigned int dataID, unsigned int fileID);
    bool unlinkDataFile(unsigned int dataID, unsigned int fileID);
    /// The first data project that a folder is linked to.
    bool getDataByFolder(unsigned int folderID, tagDataTable& data);
    /// The first data project that a file is linked to.
    bool getDataByFile(unsigned int fileID, tagDataTable& data);
    /// Asks the centre to make a folder. Returns its identifier, or 0xFFFFFFFF on any failure and, without a
    /// call, when `secondID` is 0. The centre defines what the two identifiers mean.
    unsigned int createFolder(unsigned int firstID, unsigned int secondID, const QString& path);

    // Comments
    //
    // A comment is a content and a state of the caller's company; records of any kind point at it.
    // Identifiers are 0xFFFFFFFF on any failure.

    ENUM_RET_TYPE getCommentInfo(unsigned int commentID, QString& content, QString& state);
    ENUM_RET_TYPE getCommentInfo(QList<tagCommentInfo>& comments);
    ENUM_RET_TYPE getCommentContent(QStringList& contents);
    /// The states of the comments with that content.
    ENUM_RET_TYPE getCommentState(const QString& content, QStringList& states);
    unsigned int getCommentID(const QString& content, const QString& state);
    unsigned int addCommentInfo(const QString& content, const QString& state);
    bool linkCommentInfoToRecord(ENUM_DATA_TYPE type, unsigned int recordID, unsigned int commentID);
    /// An empty list is a success without a call.
    bool linkCommentInfoToRecord(ENUM_DATA_TYPE type, const QList<unsigned int>& recordIDs,
                                 unsigned int commentID);
    /// Adds a comment and links it. Returns the comment's identifier, also when the link failed.
    unsigned int linkCommentInfoToRecord(ENUM_DATA_TYPE type, unsigned int recordID, const QString& content,
                                         const QString& state);

    // Image comments
    //
    // An image comment is the `mark` of the queries by project and mark. It belongs to no company.

    ENUM_RET_TYPE getImageComment(unsigned int commentID, QString& content, QString& state);
    ENUM_RET_TYPE getImageComment(QList<tagCommentInfo>& comments);
    unsigned int getImageCommentID(const QString& content, const QString& state);
    unsigned int addImageComment(const QString& content, const QString& state);
    bool linkImageComment(ENUM_DATA_TYPE type, unsigned int recordID, unsigned int commentID);
    bool unlinkImageComment(ENUM_DATA_TYPE type, unsigned int recordID, unsigned int commentID);

    // Image analysis and server-side copy
    //
    // These return at once and have no time limit. A signal of the singleton reports success. A failure is
    // only logged, so an application that waits needs a limit of its own.

    /// Asks the centre to analyse an image. `analyzeFlag` is passed on to the centre.
    void analyzeImage(const CLumoFilterFile& filter, bool analyzeFlag);
    /// Asks for several images in one call. The signal has those that passed, in the order of the call.
    void analyzeImages(const QList<CLumoFilterFile>& listFilter, bool analyzeFlag);
    /// Asks the centre to copy a file into the catalogue's storage. The centre defines what the two targets
    /// and the flag mean.
    void fileCopy(const QString& srcFile, unsigned int targetA, unsigned int targetB,
                  const QString& relativePath, bool copyFlag);
    /// Asks the centre to copy a file out of the catalogue's storage.
    void fileCopy(unsigned int sourceID, const QString& distPath, bool copyFlag);

    // Metadata of scenes
    //
    // The centre reads a scene's metadata file by its identifier. Lists are appended to.

    /// Returns the scene's name; empty on any failure.
    QString getSpot5FromMetadataDim(unsigned int id);
    bool getSpot6FromDim(unsigned int id, QString& name, QStringList& mainFiles, QStringList& metaFiles);
    bool getAlosFromSummary(unsigned int id, QString& name, QStringList& mainFiles, QStringList& metaFiles);
    bool getAdsFromSup(unsigned int id, QString& text1, QString& text2, QString& text3, QString& text4,
                       QString& text5, QString& text6);

    // Transfers
    //
    // Each looks up on the caller's thread what it needs, then starts a task of its own and returns; the
    // transfer runs on the thread pool, over a channel of its own. Returns false when nothing was started;
    // the callback is then never called. After true the callback reports the rest. A started transfer can't
    // be cancelled; a process that ends waits for it.
    //
    // A place is its kind, an ENUM_DATA_TYPE from disk to file, and its identifier. Local paths may have
    // either kind of separator; "\" is part of a name in a path of something that exists. `overwrite`
    // replaces a file or link that exists at the target; otherwise such a target is kept, also one that
    // appears meanwhile. The empty local folder is the working folder.
    //
    // Local names are UTF-8. An application whose locale is not calls
    // QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")) first, or the folders of a download
    // are made under other names than its files go to.

    /// Sends a local file or folder to a disk (its top folder) or a folder of the catalogue. `extraID` is
    /// passed on to the storage box; 0xFFFFFFFF for none.
    bool upload(const QString& localPath, const QPair<int, unsigned int>& dest, unsigned int extraID,
                bool overwrite, TransferCallback callback);
    /// Fetches a disk, a folder with all below it, or a file into the local folder, which must exist. Where
    /// convert.cfg says how, files are copied from the path under which this machine sees them. A folder
    /// below the local folder that is a link to a place outside it is refused, with code 6.
    bool download(const QString& localDir, const QPair<int, unsigned int>& source, bool overwrite,
                  TransferCallback callback);
    /// Fetches the package of a version of a program or a module from the storage box at `address`
    /// ("host:port"). The texts are in the code page of CLumoCStringCodec. An empty `localDir` is "/", unless
    /// convert.cfg has files copied: then it is the working folder.
    bool downloadBySoftID(const char* localDir, const char* address, const char* softID,
                          const char* versionNo, bool overwrite, TransferCallback callback);
    bool downloadByAppID(const char* localDir, const char* address, const char* appID, const char* versionNo,
                         bool overwrite, TransferCallback callback);

    // Transfer control, for a host with a channel of its own

    /// Asks the data operations service on `channel` whether a transfer may go on, with 100 times the
    /// usual time limit. False when it may not, and on any failure. The two values are passed through.
    bool CheckTransfer(const boost::shared_ptr<wirecall::RpcChannel>& channel, const QString& taskID,
                       const QString& servPath, int valueA, int valueB, const QStringList& filePaths,
                       const QStringList& dirPaths, const QVector<char>& transMsg);
    /// Reports to the data operations service on `channel` how far a transfer has come.
    void TransferProgress(const boost::shared_ptr<wirecall::RpcChannel>& channel, const QString& taskID,
                          int valueA, int valueB, int valueC);
    /// Replaces the content of `packed` by: the number of bytes that follow and the length of the type
    /// name, both 32-bit in network byte order, the full type name, the serialised message. Always true.
    /// Throws std::length_error, with `packed` unchanged, when that is longer than 2^31 - 1 bytes.
    bool PackProtobufMessage(const google::protobuf::Message* message, QVector<char>& packed);

    // Company numbers and national areas

    /// The number of a company by its identifier; empty on any failure.
    QString getCompanyNo(unsigned int companyID);
    /// Adds the areas that the centre gives for `areaID`, name by identifier; a known one is replaced.
    ENUM_RET_TYPE getNationalArea(unsigned int areaID, QMap<unsigned int, QString>& areas);

    // Storage boxes

    /// Adds the storage boxes of the caller's company; a known key gets the new value.
    bool getKestaList(QMap<QString, QString>& boxes);
    /// The network address of the storage box of that code; empty on any failure.
    QString getKestaIP(const QString& code);

    // Versions
    //
    // A program goes by its SoftID, a module by its AppID. The texts are in the system code page and must
    // not be null. A text that the centre does not send leaves its member of `info` as it was.

    bool getVersionBySoftID(const char* softID, const char* versionNo, tagVersionInfo& info);
    bool getVersionByAppID(const char* appID, const char* versionNo, tagVersionInfo& info);
    bool getLatestVersionBySoftID(const char* softID, tagVersionInfo& info);
    bool getLatestVersionByAppID(const char* appID, tagVersionInfo& info);

protected:
    CLumoDataMgr();
    ~CLumoDataMgr() override;

    /// Opens a channel to `address` with the manager's token; empty on failure.
    boost::shared_ptr<wirecall::RpcChannel> newChannel(const QString& address);

    /// Path on the storage box and, in `kestaCode`, the code of that box. Empty on failure, with
    /// `kestaCode` untouched.
    QString getFileFullPath(unsigned int fileID, QString& kestaCode);
    QString getFolderFullPath(unsigned int folderID, QString& kestaCode);

    /// Path of a version's package on its storage box; empty on failure.
    QString getAppFullPathBySoftID(const QString& softID, const QString& versionNo);
    QString getAppFullPathByAppID(const QString& appID, const QString& versionNo);

    // Conversions: an absent key becomes 0xFFFFFFFF, an absent text is zero-filled, an absent number of the
    // coordinate settings 0, an absent code -1. An absent optional number clears its presence bit alone.

    static void getDiskFromBean(const ledgerserver::DataAddressBean& bean, tagDiskTable& disk);
    static void getFolderFromBean(const ledgerserver::SrcTableBean& bean, tagFolderTable& folder);
    static void getFileFromBean(const ledgerserver::FileTableBean& bean, tagFileTable& file);
    static void getDataFromBean(const ledgerserver::DataSrcBean& bean, tagDataTable& data);
    static void getDataTypeFromBean(const ledgerserver::DataSrcTypeBean& bean, tagTypeTable& type);
    static void getKFImageDataFromBean(const ledgerserver::DataSrcPhotoBean& bean, tagKFImageTable& image);
    static void getSatImageDataFromBean(const ledgerserver::DataSrcSatBean& bean, tagSatTable& image);
    static void getAdsImageDataFromBean(const ledgerserver::DataSrcAdsBean& bean, tagAdsTable& image);
    static void getCtrlFileDataFromBean(const ledgerserver::DataSrcControlBean& bean, tagCtrlFileTable& file);
    /// `ctrlFile` is stored in the point.
    static void getCtrlPointDataFromBean(const ledgerserver::DataSrcControlInfoBean& bean,
                                         tagCtrlPointTable& point,
                                         const tagCtrlFileTable* ctrlFile = nullptr);
    static void getDemDataFromBean(const ledgerserver::DataSrcDemBean& bean, tagDemTable& dem);
    static void getDsmDataFromBean(const ledgerserver::DataSrcDsmBean& bean, tagDsmTable& dsm);
    static void getDomDataFromBean(const ledgerserver::DataSrcDomBean& bean, tagDomTable& dom);
    static void getDlgDataFromBean(const ledgerserver::DataSrcDlgBean& bean, tagDlgTable& dlg);
    static void getCommentInfoFromBean(const ledgerserver::CommentInfoBean& bean, tagCommentInfo& info);
    static void getCommentImageFromBean(const ledgerserver::CommentImageBean& bean, tagCommentInfo& info);
    /// An absent text leaves its member as it was.
    static void getVersionInfoFromBean(const ledgerserver::VersionTableBean& bean, tagVersionInfo& info);

    // The ends of the calls that are answered by signal; each frees its controller and response.

    void analyzeImageFinished(wirecall::RpcController* controller, const CLumoFilterFile& filter,
                              forgeserver::AnalyzeImageRsp* response);
    void analyzeImagesFinished(wirecall::RpcController* controller, const QList<CLumoFilterFile>& listFilter,
                               forgeserver::AnalyzeImagesRsp* response);
    void fileCopyToDbFinished(wirecall::RpcController* controller, const QString* strFile,
                              forgeserver::FileCopyToDbRsp* response);
    void fileCopyFromDbFinished(wirecall::RpcController* controller, const QString* strFile,
                                forgeserver::FileCopyFromDbRsp* response);

    static std::atomic<CLumoDataMgr*> m_Instance;

private:
    /// Frees the singleton when the library is unloaded.
    class CLumoFreeSelf
    {
    public:
        ~CLumoFreeSelf();
    };

    friend class CallFrame;
    template <class Record>
    friend struct RecordKind;
    friend class CLumoDownloadRunnable;
    friend class CLumoUploadRunnable;

    /// Starts the download of a path on a storage box; false when it is empty.
    bool downloadPath(const char* localDir, const char* address, const QString& path, bool overwrite,
                      const TransferCallback& callback);

    /// Fills the bean from a text of assignments; false when the text lacks what its kind needs.
    bool populateCheckData(ledgerserver::CheckDataBean* bean, int type, const QString& text);

    /// Pass on the closure's copy of the text.
    void fileCopiedToDb(wirecall::RpcController* controller, const QString& strFile,
                        forgeserver::FileCopyToDbRsp* response);
    void fileCopiedFromDb(wirecall::RpcController* controller, const QString& strFile,
                          forgeserver::FileCopyFromDbRsp* response);

    /// Waits for all transfers, running and queued.
    void endTransfers();

    /// Reads convert.cfg of the working directory or of the folder above; true when both texts are set.
    bool pathConvertParam();

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
    bool m_PathConvert;
    QString m_ConvertFrom; ///< regular expression for the head of a path on a storage box
    QString m_ConvertTo;   ///< what this machine has in its place
};

#endif
