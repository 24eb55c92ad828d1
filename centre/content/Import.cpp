#include "centre/content/Import.h"

#include "centre/base/Error.h"
#include "centre/base/Path.h"
#include "centre/base/Text.h"
#include "centre/database/Database.h"
#include "centre/database/RowInsertion.h"
#include "centre/database/Sql.h"
#include "centre/store/StorageTree.h"
#include "centre/store/Store.h"
#include "components/bulkhaul/files/Chunks.h"
#include "components/bulkhaul/files/Folder.h"
#include "lumo/components/platform/Utf8.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <vector>

namespace fs = std::filesystem;

namespace centre {

namespace {

// The limits of a transaction: few flushes, but other writers get their turn.
constexpr int kBatchRows = 10000;
constexpr std::chrono::milliseconds kBatchTime(500);

constexpr char kAddFiles[] = "INSERT INTO file(parent_id, name, size, digest)";
constexpr char kIfThere[] = " ON CONFLICT (parent_id, name) DO UPDATE" // by an upload meanwhile
                            " SET size = excluded.size, digest = excluded.digest";
const Sql kSetBoxOfDisk("UPDATE disk SET kesta_code = ? WHERE id = ?");

class Importer : public DiskVisitor
{
public:
    Importer(Store& store, const Disk& disk, std::uint32_t folderId, const ImportOptions& options,
             ImportReport& report)
        : m_Database(store.database()),
          m_Disk(disk),
          m_Options(options),
          m_Report(report),
          m_Tree(m_Database),
          m_NewFiles(m_Database, kAddFiles, 4, kIfThere)
    {
        m_FolderIds.push_back(folderId);
    }

    bool visit(DiskEntry& entry) override
    {
        m_Options.progress(++m_Entries);
        commitInTime();
        if (entry.real != DiskEntry::Real::Present)
            return false;
        if (!entry.isFolder) {
            addFile(entry);
            return false;
        }
        ++(entry.id == 0 ? m_Report.newFolders : m_Report.knownFolders);
        if (entry.id == 0) {
            begin();
            entry.id = m_Tree.addFolder(m_Disk.id, m_FolderIds.back(), lastName(entry.below));
        }
        m_FolderIds.push_back(entry.id);
        return true;
    }

    void leave(const DiskEntry&) override { m_FolderIds.pop_back(); }

    void skip(const std::string& path, const std::string& reason) override
    {
        ++m_Report.problems;
        m_Options.problem(escaped(path) + ": " + reason);
    }

    void refuse(const std::string& path, const std::string& reason) override { skip(path, reason); }

    void finishTransaction()
    {
        if (m_Transaction) {
            m_NewFiles.flush();
            m_Transaction->commit();
        }
        m_Transaction.reset();
    }

private:
    void addFile(const DiskEntry& file)
    {
        FileContent content{file.size};
        if (m_Options.readDigests && !readDigest(file, content.digest))
            return;
        ++(file.id == 0 ? m_Report.newFiles : m_Report.knownFiles);
        const bool isKnown = file.id != 0 && file.catalogueSize == file.size &&
                             (content.digest.empty() || content.digest == file.catalogueDigest);
        if (isKnown)
            return;
        m_Report.changedFiles += isChanged(file, content) ? 1 : 0;
        begin();
        if (file.id != 0)
            return m_Tree.addFile(m_FolderIds.back(), lastName(file.below), content);
        using Value = RowInsertion::Value;
        m_NewFiles.add({Value(std::int64_t(m_FolderIds.back())), Value(lastName(file.below)),
                        Value(static_cast<std::int64_t>(content.size)),
                        content.digest.empty() ? Value() : Value(content.digest)});
    }

    static bool isChanged(const DiskEntry& file, const FileContent& content)
    {
        return (file.catalogueSize && file.catalogueSize != content.size) ||
               (!file.catalogueDigest.empty() && !content.digest.empty());
    }

    bool readDigest(const DiskEntry& file, std::string& digest)
    {
        if (file.size > bulkhaul::kChunkSize)
            finishTransaction(); // others may write while it is read
        const std::string path = (m_Disk.rootPath == "/" ? "" : m_Disk.rootPath) + "/" + file.below;
        try {
            digest = digestOfFile(path);
            return true;
        } catch (const Error& error) {
            skip(path, error.what());
            return false;
        }
    }

    /// Begins a transaction unless one is under way.
    void begin()
    {
        if (!m_Transaction) {
            m_Rows = 0;
            m_Begun = std::chrono::steady_clock::now();
            m_Transaction.emplace(m_Database);
        }
        ++m_Rows;
    }

    void commitInTime()
    {
        if (m_Transaction &&
            (m_Rows >= kBatchRows || std::chrono::steady_clock::now() - m_Begun >= kBatchTime))
            finishTransaction();
    }

    Database& m_Database;
    const Disk& m_Disk;
    const ImportOptions& m_Options;
    ImportReport& m_Report;
    StorageTree m_Tree;
    RowInsertion m_NewFiles; ///< in the transaction
    std::optional<Transaction> m_Transaction;
    std::vector<std::uint32_t> m_FolderIds; ///< of the folders that the walk is in
    std::uint64_t m_Entries = 0;
    int m_Rows = 0;
    std::chrono::steady_clock::time_point m_Begun;
};

std::string absoluteFolder(const std::string& folder)
{
    std::error_code error;
    const fs::path path = fs::canonical(folder, error);
    if (error)
        throw Error(ExitCode::Failed, "can't import " + escaped(folder) + ": " + error.message());
    if (!fs::is_directory(path, error))
        throw Error(ExitCode::WrongUse, escaped(folder) + " is not a folder");
    if (!platform::isUtf8(path.string()))
        throw Error(ExitCode::WrongUse, "the folder's path must be UTF-8: " + escaped(path.string()));
    return path.string();
}

/// Returns the company's disk of that name, if it exists. It must show the same real folder.
std::optional<Disk> findDisk(Store& store, const ImportOptions& options, const std::string& rootPath)
{
    store.companyId(options.companyNo); // throws if there is no such company
    std::vector<Disk> found;
    if (!options.diskName.empty() && platform::isUtf8(options.diskName))
        found = findDisks(store, {options.diskName, options.companyNo, ""});
    if (found.empty())
        return std::nullopt;
    if (found.front().rootPath != rootPath)
        throw Error(ExitCode::Failed, "disk " + options.diskName + " shows " + found.front().rootPath +
                                          ", not " + rootPath + "; give another --disk name");
    return found.front();
}

void setBox(Store& store, std::uint32_t diskId, const std::string& boxCode)
{
    const auto statement = store.database().prepare(kSetBoxOfDisk);
    statement->bindAll(boxCode, diskId);
    statement->run();
}

} // namespace

std::string realFolder(const Store& store, const std::string& folder)
{
    std::string path = absoluteFolder(folder);
    // A user who may write to a box could replace the database.
    if (overlap(store.dataFolder(), path))
        throw Error(ExitCode::WrongUse, escaped(path) + " holds the data folder or is part of it;" +
                                            " give another folder, or keep the data folder outside of it");
    return path;
}

std::uint32_t importFolder(Store& store, const Disk& disk, const std::string& below,
                           const ImportOptions& options, ImportReport& report)
{
    std::uint32_t folderId = disk.topFolderId;
    if (!below.empty()) {
        Transaction transaction(store.database());
        folderId =
            StorageTree(store.database()).makeFolders(disk.id, disk.topFolderId, bulkhaul::splitBelow(below));
        transaction.commit();
    }
    DiskWalk walk(store, disk);
    Importer importer(store, disk, folderId, options, report);
    walk.run(importer, below, folderId);
    importer.finishTransaction();
    report.notServed = walk.notServed();
    return folderId;
}

ImportReport importTree(Store& store, const ImportOptions& options)
{
    ImportReport report;
    report.rootPath = realFolder(store, options.folder);
    if (!options.boxCode.empty())
        store.boxAddress(options.boxCode); // throws if there is no such box
    auto disk = findDisk(store, options, report.rootPath);
    report.diskIsNew = !disk;
    if (!disk) {
        store.addDisk(options.diskName, report.rootPath, options.companyNo, options.boxCode);
        disk = findDisk(store, options, report.rootPath);
    } else if (!options.boxCode.empty()) {
        setBox(store, disk->id, options.boxCode);
    }
    importFolder(store, *disk, "", options, report);
    return report;
}

} // namespace centre
