#include "centre/content/DiskWalk.h"

#include "centre/base/Error.h"
#include "centre/base/Text.h"
#include "centre/content/RealFolder.h"
#include "centre/database/Database.h"
#include "centre/database/Sql.h"
#include "centre/store/Store.h"
#include "components/bulkhaul/files/Chunks.h"
#include "components/bulkhaul/files/FileFailure.h"
#include "components/bulkhaul/files/Folder.h"
#include "components/bulkhaul/files/SourceFile.h"
#include "lumo/components/platform/Utf8.h"

#include <algorithm>
#include <climits>
#include <utility>

namespace centre {

namespace {

/// A file or folder of a folder of the catalogue.
struct KnownEntry
{
    std::string name;
    DiskEntry entry;
};

const Sql kFoldersIn("SELECT id, name FROM folder WHERE disk_id = ? AND parent_id = ?");
const Sql kFilesIn("SELECT id, name, size, digest FROM file WHERE parent_id = ?");
const Sql kDisksWithFolders("SELECT disk.id, folder.id, disk.name, companyno, root_path FROM disk"
                            " JOIN company ON company.id = company_id"
                            " JOIN folder ON disk_id = disk.id AND parent_id = 0"
                            " WHERE (:name = '' OR disk.name = :name)"
                            " AND (:company = '' OR companyno = :company)"
                            " AND (:box = '' OR kesta_code = :box) ORDER BY disk.id");

/// Reads folders of the catalogue.
class CatalogueFolders
{
public:
    CatalogueFolders(Database& database, std::uint32_t diskId)
        : m_DiskId(diskId), m_Folders(database.prepare(kFoldersIn)), m_Files(database.prepare(kFilesIn))
    {
    }

    /// Returns the content of a folder in the order of names, a folder before a file of its name.
    std::vector<KnownEntry> read(std::uint32_t folderId)
    {
        std::vector<KnownEntry> known;
        const ResetAtEnd resetFolders(*m_Folders);
        m_Folders->bindAll(m_DiskId, folderId);
        while (m_Folders->step())
            known.push_back(nextEntry(*m_Folders, true));
        const ResetAtEnd resetFiles(*m_Files);
        m_Files->bindAll(folderId);
        while (m_Files->step()) {
            known.push_back(nextEntry(*m_Files, false));
            if (const std::optional<std::int64_t> size = m_Files->integer(2))
                known.back().entry.catalogueSize = static_cast<std::uint64_t>(*size);
            known.back().entry.catalogueDigest = m_Files->string(3);
        }
        std::stable_sort(known.begin(), known.end(), [](const KnownEntry& one, const KnownEntry& other) {
            return one.name < other.name;
        });
        return known;
    }

private:
    static KnownEntry nextEntry(Statement& statement, bool isFolder)
    {
        return {statement.string(1), {"", isFolder, statement.id(0)}};
    }

    const std::uint32_t m_DiskId;
    std::unique_ptr<Statement> m_Folders;
    std::unique_ptr<Statement> m_Files;
};

DiskEntry::Real compare(const DiskEntry& known, const RealEntry& real)
{
    switch (real.kind) {
    case RealEntry::Kind::Partial:
        return DiskEntry::Real::Absent;
    case RealEntry::Kind::Folder:
        return known.isFolder ? DiskEntry::Real::Present : DiskEntry::Real::OtherKind;
    case RealEntry::Kind::File:
        return known.isFolder ? DiskEntry::Real::OtherKind : DiskEntry::Real::Present;
    default:
        return DiskEntry::Real::OtherKind;
    }
}

} // namespace

class DiskWalk::Walk
{
public:
    Walk(Database& database, const Disk& disk)
        : m_Disk(disk), m_Catalogue(database, disk.id), m_Root(disk.rootPath == "/" ? "" : disk.rootPath)
    {
    }

    void requireMounted()
    {
        const std::vector<KnownEntry> known = m_Catalogue.read(m_Disk.topFolderId);
        std::vector<RealEntry> real;
        const std::string reason = readRealFolder(m_Disk.rootPath, real);
        if (!reason.empty())
            throw Error(ExitCode::Failed, "can't read the root of disk " + m_Disk.name + ", " +
                                              escaped(m_Disk.rootPath) + ": " + reason);
        if (real.empty() && !known.empty())
            throw Error(ExitCode::Failed, "the root of disk " + m_Disk.name + ", " +
                                              escaped(m_Disk.rootPath) + ", is empty; is the disk mounted?");
    }

    void run(DiskVisitor& visitor, const std::string& below, std::uint32_t folderId)
    {
        visitContent(visitor, {below, true, folderId, {}, {}, DiskEntry::Real::Present});
    }

    std::uint32_t topFolderId() const { return m_Disk.topFolderId; }

    NotServed m_NotServed;

private:
    std::string pathOf(const std::string& below) const
    {
        return below.empty() ? m_Disk.rootPath : m_Root + "/" + below;
    }

    void refuse(DiskVisitor& visitor, const std::string& below, const std::string& reason)
    {
        ++m_NotServed.names;
        visitor.refuse(pathOf(below), reason);
    }

    void visitContent(DiskVisitor& visitor, const DiskEntry& folder)
    {
        std::vector<KnownEntry> known;
        if (folder.id != 0)
            known = m_Catalogue.read(folder.id);
        std::vector<RealEntry> real;
        if (folder.real == DiskEntry::Real::Present) {
            const std::string reason = readRealFolder(pathOf(folder.below), real);
            if (!reason.empty())
                return visitor.skip(pathOf(folder.below), reason);
        }
        const std::string prefix = folder.below.empty() ? "" : folder.below + "/";
        if (!real.empty() && !canBeServed(prefix + "x"))
            return refuse(visitor, folder.below, "it is too deep for a box to serve what is in it");
        auto each = known.begin();
        for (const RealEntry& entry : real) {
            for (; each != known.end() && each->name < entry.name; ++each)
                visit(visitor, prefix, *each);
            const auto first = each;
            while (each != known.end() && each->name == entry.name)
                ++each;
            visitReal(visitor, prefix, entry, first, each);
        }
        for (; each != known.end(); ++each)
            visit(visitor, prefix, *each);
    }

    /// Visits a real entry and those of its name in the catalogue, from `first` to before `end`.
    void visitReal(DiskVisitor& visitor, const std::string& prefix, const RealEntry& real,
                   std::vector<KnownEntry>::iterator first, std::vector<KnownEntry>::iterator end)
    {
        if (real.kind == RealEntry::Kind::Unreadable)
            return visitor.skip(pathOf(prefix + real.name), real.reason);
        bool isKnown = false;
        for (; first != end; ++first) {
            first->entry.real = compare(first->entry, real);
            first->entry.size = real.size;
            isKnown = isKnown || first->entry.real == DiskEntry::Real::Present;
            visit(visitor, prefix, *first);
        }
        if (!isKnown)
            visitNew(visitor, prefix, real);
    }

    void visit(DiskVisitor& visitor, const std::string& prefix, KnownEntry& known)
    {
        DiskEntry& entry = known.entry;
        entry.below = prefix + known.name;
        if (!visitor.visit(entry) || !entry.isFolder)
            return;
        visitContent(visitor, entry);
        visitor.leave(entry);
    }

    void visitNew(DiskVisitor& visitor, const std::string& prefix, const RealEntry& real)
    {
        KnownEntry entry{real.name, {"", real.kind == RealEntry::Kind::Folder}};
        entry.entry.real = DiskEntry::Real::Present;
        entry.entry.size = real.size;
        switch (real.kind) {
        case RealEntry::Kind::Link:
            ++m_NotServed.links;
            return;
        case RealEntry::Kind::Special:
            ++m_NotServed.special;
            return;
        case RealEntry::Kind::Partial:
            ++m_NotServed.partial;
            return;
        default:
            if (!platform::isUtf8(real.name))
                return refuse(visitor, prefix + real.name, "the name is not UTF-8");
            if (m_Root.size() + 1 + prefix.size() + real.name.size() >= PATH_MAX)
                return refuse(visitor, prefix + real.name, "the path is too long");
            return visit(visitor, prefix, entry);
        }
    }

    const Disk m_Disk;
    CatalogueFolders m_Catalogue;
    const std::string m_Root; ///< without a "/" at its end
};

bool canBeServed(const std::string& below)
{
    try {
        static_cast<void>(bulkhaul::splitBelow(below));
        return true;
    } catch (const bulkhaul::FileFailure&) {
        return false;
    }
}

void DiskVisitor::leave(const DiskEntry&)
{
}

void DiskVisitor::refuse(const std::string&, const std::string&)
{
}

DiskWalk::DiskWalk(Store& store, const Disk& disk) : m_Walk(std::make_unique<Walk>(store.database(), disk))
{
}

DiskWalk::~DiskWalk() = default;

void DiskWalk::requireMounted()
{
    m_Walk->requireMounted();
}

void DiskWalk::run(DiskVisitor& visitor)
{
    m_Walk->run(visitor, "", m_Walk->topFolderId());
}

void DiskWalk::run(DiskVisitor& visitor, const std::string& below, std::uint32_t folderId)
{
    m_Walk->run(visitor, below, folderId);
}

const NotServed& DiskWalk::notServed() const
{
    return m_Walk->m_NotServed;
}

std::string NotServed::text() const
{
    std::string text;
    const auto add = [&text](std::uint64_t count, const char* noun) {
        if (count > 0)
            text += (text.empty() ? "" : ", ") + counted(count, noun);
    };
    add(links, "link");
    add(special, "special file");
    add(partial, "partial file");
    add(names, "refused name");
    return text.empty() ? "nothing" : text;
}

std::vector<Disk> findDisks(Store& store, const DiskFilter& filter)
{
    const auto rows = store.database().prepare(kDisksWithFolders);
    rows->bindAll(filter.name, filter.companyNo, filter.boxCode);
    std::vector<Disk> disks;
    while (rows->step())
        disks.push_back({rows->id(0), rows->id(1), rows->string(2), rows->string(3), rows->string(4)});
    return disks;
}

std::string digestOfFile(const std::string& path)
try {
    const auto [folder, name] = bulkhaul::splitPath(path);
    const bulkhaul::SourceFile file(bulkhaul::Folder::open(folder), name);
    std::vector<bulkhaul::Digest> chunks;
    std::string data;
    for (std::uint64_t chunk = 0; chunk < bulkhaul::chunkCount(file.size()); ++chunk) {
        file.read(chunk, data);
        chunks.push_back(bulkhaul::digestOf(data));
    }
    return bulkhaul::toHex(bulkhaul::digestOf(chunks));
} catch (const bulkhaul::FileFailure& failure) {
    throw Error(ExitCode::Failed, failure.what());
}

} // namespace centre
