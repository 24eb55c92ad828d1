#include "centre/content/Import.h"

#include "centre/base/Error.h"
#include "centre/base/Path.h"
#include "centre/base/Text.h"
#include "centre/store/StorageTree.h"
#include "centre/store/Store.h"
#include "lumo/components/platform/Utf8.h"

#include <algorithm>
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

class Importer
{
public:
    Importer(Store& store, ImportReport& report, const std::function<void(const std::string&)>& problem)
        : m_Database(store.database()), m_Report(report), m_Problem(problem), m_Tree(m_Database)
    {
    }

    void run(std::uint32_t diskId, std::uint32_t topFolderId, const fs::path& root)
    {
        m_DiskId = diskId;
        begin();
        m_Pending.push_back({topFolderId, root});
        while (!m_Pending.empty()) {
            const Folder folder = std::move(m_Pending.back());
            m_Pending.pop_back();
            registerContent(folder);
        }
        m_Transaction->commit();
    }

private:
    struct Folder
    {
        std::uint32_t id;
        fs::path path;
    };

    struct Names
    {
        std::vector<std::string> folders;
        std::vector<std::string> files;
    };

    void registerContent(const Folder& folder)
    {
        Names names = read(folder.path);
        std::sort(names.folders.begin(), names.folders.end());
        std::sort(names.files.begin(), names.files.end());
        const std::size_t firstChild = m_Pending.size();
        for (const std::string& name : names.folders)
            m_Pending.push_back({folderId(folder.id, name), folder.path / name});
        // The last pending folder comes next, so this makes the first by name the first visited.
        std::reverse(m_Pending.begin() + static_cast<std::ptrdiff_t>(firstChild), m_Pending.end());
        for (const std::string& name : names.files)
            addFile(folder.id, name);
    }

    Names read(const fs::path& path)
    {
        Names names;
        std::error_code error;
        fs::directory_iterator entry(path, error);
        for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
            const std::string name = entry->path().filename().string();
            std::error_code unread;
            const fs::file_type type = entryType(*entry, unread);
            if (unread)
                report(entry->path().string(), unread.message());
            else if (type != fs::file_type::regular && type != fs::file_type::directory)
                ++m_Report.skipped;
            else if (!platform::isUtf8(name))
                report(entry->path().string(), "the name is not UTF-8");
            else
                (type == fs::file_type::regular ? names.files : names.folders).push_back(name);
        }
        if (error)
            report(path.string(), error.message());
        return names;
    }

    /// Returns the type in the directory entry, which needs no system call for each file.
    static fs::file_type entryType(const fs::directory_entry& entry, std::error_code& error)
    {
        if (entry.is_symlink(error))
            return fs::file_type::symlink;
        if (!error && entry.is_directory(error))
            return fs::file_type::directory;
        return !error && entry.is_regular_file(error) ? fs::file_type::regular : fs::file_type::unknown;
    }

    std::uint32_t folderId(std::uint32_t parentId, const std::string& name)
    {
        if (const auto known = m_Tree.findFolder(m_DiskId, parentId, name)) {
            ++m_Report.knownFolders;
            return *known;
        }
        const std::uint32_t id = m_Tree.addFolder(m_DiskId, parentId, name);
        ++m_Report.newFolders;
        countRow();
        return id;
    }

    void addFile(std::uint32_t folderId, const std::string& name)
    {
        ++(m_Tree.addFile(folderId, name) ? m_Report.newFiles : m_Report.knownFiles);
        countRow();
    }

    void report(const std::string& path, const std::string& reason)
    {
        ++m_Report.problems;
        m_Problem(escaped(path) + ": " + reason);
    }

    void begin()
    {
        m_Rows = 0;
        m_Begun = std::chrono::steady_clock::now();
        m_Transaction.emplace(m_Database);
    }

    void countRow()
    {
        if (++m_Rows < kBatchRows && std::chrono::steady_clock::now() - m_Begun < kBatchTime)
            return;
        m_Transaction->commit();
        m_Transaction.reset();
        begin();
    }

    Database& m_Database;
    ImportReport& m_Report;
    const std::function<void(const std::string&)>& m_Problem;
    StorageTree m_Tree;
    std::optional<Transaction> m_Transaction;
    std::vector<Folder> m_Pending;
    std::uint32_t m_DiskId = 0;
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

/// Returns the company's disk of that name and its top folder, if it exists. It must show the same real
/// folder.
std::optional<std::pair<std::uint32_t, std::uint32_t>> findDisk(Store& store, const ImportOptions& options,
                                                                const std::string& rootPath)
{
    const auto statement = store.database().prepare(
        "SELECT disk.id, folder.id, root_path FROM disk"
        " JOIN folder ON disk_id = disk.id AND parent_id = 0 AND folder.name = disk.name"
        " WHERE company_id = ? AND disk.name = ?");
    statement->bind(1, store.companyId(options.companyNo));
    statement->bind(2, options.diskName);
    if (!statement->step())
        return std::nullopt;
    const std::string known = statement->string(2);
    if (known != rootPath)
        throw Error(ExitCode::Failed, "disk " + options.diskName + " shows " + known + ", not " + rootPath +
                                          "; give another --disk name");
    return std::make_pair(statement->id(0), statement->id(1));
}

void setBox(Store& store, std::uint32_t diskId, const std::string& boxCode)
{
    const auto statement = store.database().prepare("UPDATE disk SET kesta_code = ? WHERE id = ?");
    statement->bind(1, boxCode);
    statement->bind(2, diskId);
    statement->run();
}

} // namespace

ImportReport importTree(Store& store, const ImportOptions& options,
                        const std::function<void(const std::string&)>& problem)
{
    ImportReport report;
    report.rootPath = absoluteFolder(options.folder);
    // A user who may write to a box could replace the database.
    if (overlap(store.dataFolder(), report.rootPath))
        throw Error(ExitCode::WrongUse, escaped(report.rootPath) +
                                            " holds the data folder or is part of it;" +
                                            " give another folder, or keep the data folder outside of it");
    if (!options.boxCode.empty())
        store.boxAddress(options.boxCode); // throws if there is no such box
    auto disk = findDisk(store, options, report.rootPath);
    report.diskIsNew = !disk;
    if (!disk) {
        store.addDisk(options.diskName, report.rootPath, options.companyNo, options.boxCode);
        disk = findDisk(store, options, report.rootPath);
    } else if (!options.boxCode.empty()) {
        setBox(store, disk->first, options.boxCode);
    }
    Importer(store, report, problem).run(disk->first, disk->second, report.rootPath);
    return report;
}

} // namespace centre
