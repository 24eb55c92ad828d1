#include "centre/content/Prune.h"

#include "centre/base/Error.h"
#include "centre/base/Text.h"
#include "centre/database/Database.h"
#include "centre/store/RecordKinds.h"
#include "centre/store/Store.h"
#include "lumo/core/LumoDataTypes.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace centre {

namespace {

constexpr std::size_t kBatch = 1000; // entries in a transaction, so that other writers get their turn

/// Knows the files that are the main files of records.
class MainFiles
{
public:
    explicit MainFiles(Database& database) : m_Database(database) {}

    bool has(std::uint32_t fileId)
    {
        if (!m_Read)
            read();
        return std::binary_search(m_Files.begin(), m_Files.end(), fileId);
    }

    /// Returns the records of a main file: "sat 17, sat 18".
    std::string recordsOf(std::uint32_t fileId)
    {
        std::string records;
        for (const RecordKind& kind : recordKinds()) {
            if (!kind.hasMainFile())
                continue;
            const auto rows = m_Database.prepare("SELECT " + kind.idColumn() + " FROM " + kind.name +
                                                 " WHERE main_file_id = " + std::to_string(fileId) +
                                                 " ORDER BY " + kind.idColumn());
            while (rows->step())
                records += (records.empty() ? "" : ", ") + kind.name + " " + std::to_string(rows->id(0));
        }
        return records;
    }

private:
    void read()
    {
        for (const RecordKind& kind : recordKinds()) {
            if (!kind.hasMainFile())
                continue;
            const auto rows = m_Database.prepare("SELECT DISTINCT main_file_id FROM " + kind.name +
                                                 " WHERE main_file_id IS NOT NULL");
            while (rows->step())
                m_Files.push_back(rows->id(0));
        }
        std::sort(m_Files.begin(), m_Files.end());
        m_Read = true;
    }

    Database& m_Database;
    bool m_Read = false;
    std::vector<std::uint32_t> m_Files;
};

/// Entries of one type, files or folders, and what refers to them.
class GoneEntries
{
public:
    GoneEntries(Database& database, const std::vector<DiskEntry>& entries, bool folders)
        : m_Database(database), m_Folders(folders)
    {
        for (const DiskEntry& entry : entries)
            if (entry.isFolder == folders) {
                m_Ids += (m_Ids.empty() ? "" : ",") + std::to_string(entry.id);
                ++m_Count;
            }
    }

    std::uint64_t count() const { return m_Count; }
    std::uint64_t links() { return number("SELECT count(*) FROM " + linked()); }
    std::uint64_t comments() { return number("SELECT count(*) FROM comment_record" + ofRecords()); }

    void remove()
    {
        if (m_Count == 0)
            return;
        m_Database.execute("DELETE FROM " + linked());
        m_Database.execute("DELETE FROM comment_record" + ofRecords());
        m_Database.execute("DELETE FROM image_mark" + ofRecords());
        m_Database.execute("DELETE FROM " + std::string(m_Folders ? "folder" : "file") + " WHERE id IN (" +
                           m_Ids + ")");
    }

private:
    std::string linked() const
    {
        return std::string(m_Folders ? "data_folder WHERE src_id" : "data_file WHERE file_id") + " IN (" +
               m_Ids + ")";
    }

    std::string ofRecords() const
    {
        return " WHERE data_type_id = " + std::to_string(m_Folders ? DATA_TYPE_FOLDER : DATA_TYPE_FILE) +
               " AND record_id IN (" + m_Ids + ")";
    }

    std::uint64_t number(const std::string& sql)
    {
        return m_Count == 0 ? 0 : std::stoull(m_Database.value(sql));
    }

    Database& m_Database;
    const bool m_Folders;
    std::string m_Ids; ///< with commas between them
    std::uint64_t m_Count = 0;
};

class Pruner : public DiskVisitor
{
public:
    Pruner(Store& store, const Disk& disk, const PruneOptions& options)
        : m_Database(store.database()), m_Disk(disk), m_Options(options), m_MainFiles(m_Database)
    {
        ::stat(disk.rootPath.c_str(), &m_Root);
    }

    bool visit(DiskEntry& entry) override
    {
        m_Options.progress(++m_Entries);
        if (entry.id == 0 || entry.real == DiskEntry::Real::OtherKind)
            return false;
        if (entry.isFolder)
            m_HoldsKept.push_back(false);
        else if (entry.real == DiskEntry::Real::Absent)
            addFile(entry);
        return entry.isFolder;
    }

    void leave(const DiskEntry& folder) override
    {
        const bool holdsKept = m_HoldsKept.back();
        m_HoldsKept.pop_back();
        if (folder.real != DiskEntry::Real::Absent)
            return;
        if (!holdsKept)
            addGone(folder);
        else if (!m_HoldsKept.empty())
            m_HoldsKept.back() = true;
    }

    void skip(const std::string& path, const std::string& reason) override
    {
        ++m_Report.skipped;
        m_Options.skipped(path, reason);
    }

    PruneReport finish()
    {
        handleBatch();
        return m_Report;
    }

private:
    void addFile(const DiskEntry& file)
    {
        if (!m_MainFiles.has(file.id))
            return addGone(file);
        ++m_Report.kept;
        m_Options.kept(file, m_MainFiles.recordsOf(file.id));
        if (!m_HoldsKept.empty())
            m_HoldsKept.back() = true;
    }

    void addGone(const DiskEntry& entry)
    {
        m_Batch.push_back(entry);
        if (m_Batch.size() == kBatch)
            handleBatch();
    }

    void handleBatch()
    {
        if (m_Options.remove)
            while (!removeBatch())
                continue;
        else
            countBatch();
        for (const DiskEntry& entry : m_Batch) {
            ++(entry.isFolder ? m_Report.folders : m_Report.files);
            m_Options.removed(entry);
        }
        m_Batch.clear();
    }

    /// Returns false, and leaves all as it was, when something has appeared again. An upload names its file
    /// before it registers it, and the database lets it register only before the removal, when the file is
    /// found here, or after it, when the file becomes a new entry.
    bool removeBatch()
    {
        Transaction transaction(m_Database);
        dropReturned();
        const PruneReport before = m_Report;
        countBatch();
        GoneEntries(m_Database, m_Batch, false).remove();
        GoneEntries(m_Database, m_Batch, true).remove();
        if (dropReturned()) {
            m_Report = before;
            return false; // the transaction rolls back
        }
        requireSameRoot();
        transaction.commit();
        return true;
    }

    void countBatch()
    {
        for (const bool folders : {false, true}) {
            GoneEntries gone(m_Database, m_Batch, folders);
            m_Report.links += gone.links();
            m_Report.comments += gone.comments();
        }
    }

    /// Takes what is on the disk out of the batch. Returns whether there was any.
    bool dropReturned()
    {
        const auto returned = std::remove_if(m_Batch.begin(), m_Batch.end(), [this](const DiskEntry& entry) {
            struct stat status = {};
            const std::string path = m_Disk.rootPath + "/" + entry.below;
            return canBeServed(entry.below) &&
                   (::lstat(path.c_str(), &status) == 0 || (errno != ENOENT && errno != ENOTDIR));
        });
        const bool any = returned != m_Batch.end();
        m_Batch.erase(returned, m_Batch.end());
        return any;
    }

    /// A disk that is unmounted meanwhile must not empty the catalogue.
    void requireSameRoot() const
    {
        struct stat now = {};
        if (::stat(m_Disk.rootPath.c_str(), &now) != 0 || now.st_dev != m_Root.st_dev ||
            now.st_ino != m_Root.st_ino)
            throw Error(ExitCode::Failed, "the root of disk " + m_Disk.name + ", " +
                                              escaped(m_Disk.rootPath) +
                                              ", has become another folder; is the disk mounted?");
    }

    Database& m_Database;
    const Disk& m_Disk;
    const PruneOptions& m_Options;
    MainFiles m_MainFiles;
    struct stat m_Root = {};
    std::vector<bool> m_HoldsKept; ///< of the folders that the walk is in: whether they hold a kept file
    std::vector<DiskEntry> m_Batch;
    PruneReport m_Report;
    std::uint64_t m_Entries = 0;
};

} // namespace

PruneReport pruneDisk(Store& store, const Disk& disk, const PruneOptions& options)
{
    DiskWalk walk(store, disk);
    Pruner pruner(store, disk, options);
    walk.requireMounted();
    walk.run(pruner);
    return pruner.finish();
}

} // namespace centre
