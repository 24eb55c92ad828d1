#include "centre/box/DataFolderCatalogue.h"

#include "centre/base/Path.h"
#include "centre/base/Text.h"
#include "centre/database/Statement.h"
#include "centre/store/ServedRoot.h"
#include "components/bulkhaul/files/FileFailure.h"
#include "haulbox.pb.h"
#include "kestaserver.pb.h"

#include <unordered_map>

namespace centre {

namespace {

/// Paths below :begin, which ends with "/", are before :end, which has "0" there.
const Sql kPackages("SELECT app_full_path FROM version WHERE kesta_code = :box AND "
                    "(app_full_path = :path OR (app_full_path > :begin AND app_full_path < :end))");
const Sql kDisksAt("SELECT id FROM disk WHERE root_path = ? AND kesta_code = ?");
const Sql kFolderOnBox(fullPath("SELECT id, substr(name, 1, 0) FROM folder WHERE id = :folder") +
                       " WHERE company_id = :company AND kesta_code = :box");

template <class AuthMsg>
bool parse(const haulbox::Carried& carried, AuthMsg& message, std::string& reason)
{
    const std::string& wanted = AuthMsg::descriptor()->full_name();
    if (carried.type_name() != wanted)
        reason = "the request has " +
                 (carried.type_name().empty() ? "no message" : "a " + escaped(carried.type_name())) +
                 " where a " + wanted + " is needed";
    else if (!message.ParseFromString(carried.body()))
        reason = "the " + wanted + " in the request can't be read";
    return reason.empty();
}

/// What a message says about the use that is asked for.
struct Claim
{
    std::string userName;
    std::optional<std::uint32_t> folderId;
};

std::optional<Claim> readClaim(const haulbox::Carried& carried, BoxCatalogue::Use use, std::string& reason)
{
    if (use == BoxCatalogue::Use::Read) {
        kestaserver::DownloadAuthMsg message;
        return parse(carried, message, reason) ? std::optional(Claim{message.user_name(), std::nullopt})
                                               : std::nullopt;
    }
    kestaserver::UploadAuthMsg message;
    if (!parse(carried, message, reason))
        return std::nullopt;
    return Claim{message.user_name(),
                 message.has_folder_id() ? std::optional(message.folder_id()) : std::nullopt};
}

/// Whether the folder, on a disk of the box and the company, is the one that `path` is in or one above that.
bool holds(Connection& connection, std::uint32_t folderId, const User& user, const std::string& boxCode,
           const std::string& path)
{
    Statement& folder = connection.statement(kFolderOnBox);
    const ResetAtEnd resetAtEnd(folder);
    folder.bindAll(folderId, user.companyId, boxCode);
    if (!folder.step())
        return false;
    const std::string root = folder.string(0);
    return path != root && isAtOrBelow(root, path);
}

Access accessOf(BoxCatalogue::Use use)
{
    return use == BoxCatalogue::Use::Read ? Access::Read : Access::Write;
}

bool mayWrite(Connection& connection, const User& user, const Claim& claim, const std::string& boxCode,
              const ServedRoot& root, const std::string& path, std::string& reason)
{
    if (!user.mayWrite())
        reason = "user " + user.name + " may only read";
    else if (!root.diskId)
        reason = escaped(path) + " is in the package of a version, where nothing can be written";
    else if (claim.folderId && !holds(connection, *claim.folderId, user, boxCode, path))
        reason =
            "folder " + std::to_string(*claim.folderId) + " of the catalogue does not hold " + escaped(path);
    return reason.empty();
}

/// Returns the packages of versions on the box that are at or below a path.
std::vector<std::string> packagesBelow(Connection& connection, const std::string& boxCode,
                                       const std::string& path)
{
    Statement& packages = connection.statement(kPackages);
    const ResetAtEnd resetAtEnd(packages);
    const std::string folder = path == "/" ? std::string() : path;
    packages.bindAll(boxCode, path, folder + "/", folder + "0");
    std::vector<std::string> found;
    while (packages.step())
        found.push_back(packages.string(0));
    return found;
}

/// Registers entries on the disks of a box, inside one transaction.
class Recorder
{
public:
    Recorder(Connection& connection, const std::string& boxCode)
        : m_Connection(connection), m_Tree(connection.storageTree()), m_BoxCode(boxCode)
    {
    }

    void add(const BoxCatalogue::Entry& entry)
    {
        if (!isPlainAbsolutePath(entry.path))
            throw std::runtime_error(escaped(entry.path) + " is not a valid path to register");
        const std::vector<Folder>& there = folders(entry.folder ? entry.path : folderAbove(entry.path));
        if (there.empty())
            throw std::runtime_error("no disk of box " + m_BoxCode + " shows " + escaped(entry.path));
        for (const Folder& folder : there)
            if (!entry.folder && entry.content)
                m_Tree.addFile(folder.id, lastName(entry.path), *entry.content);
            else if (!entry.folder)
                m_Tree.addFile(folder.id, lastName(entry.path));
    }

private:
    struct Folder
    {
        std::uint32_t diskId;
        std::uint32_t id;
    };

    /// A folder of the box on each disk that shows it, registered with the folders above it.
    const std::vector<Folder>& folders(const std::string& path)
    {
        const auto known = m_Folders.find(path);
        if (known != m_Folders.end())
            return known->second;
        std::vector<Folder> found = rootsAt(path);
        if (path != "/")
            for (const Folder& parent : folders(folderAbove(path)))
                found.push_back(
                    {parent.diskId, m_Tree.makeFolders(parent.diskId, parent.id, {lastName(path)})});
        return m_Folders.emplace(path, std::move(found)).first->second;
    }

    std::vector<Folder> rootsAt(const std::string& path)
    {
        Statement& disks = m_Connection.statement(kDisksAt);
        const ResetAtEnd resetAtEnd(disks);
        disks.bindAll(path, m_BoxCode);
        std::vector<Folder> roots;
        while (disks.step()) {
            const std::uint32_t diskId = disks.id(0);
            roots.push_back({diskId, m_Tree.topFolder(diskId).value()});
        }
        return roots;
    }

    Connection& m_Connection;
    StorageTree& m_Tree;
    const std::string& m_BoxCode;
    std::unordered_map<std::string, std::vector<Folder>> m_Folders;
};

} // namespace

std::optional<BoxCatalogue::Place> DataFolderCatalogue::admit(const std::string& token,
                                                              const haulbox::Carried& carried,
                                                              const std::string& path, Use use,
                                                              std::string& reason)
{
    reason.clear();
    const std::optional<Claim> claim = readClaim(carried, use, reason);
    if (!claim)
        return std::nullopt;
    ConnectionPool::Lease connection(m_Pool);
    const Read read(*connection);
    const std::optional<User> user = connection->user(token, reason);
    if (!user)
        return std::nullopt;
    std::optional<ServedRoot> root;
    if (claim->userName != user->name)
        reason = "the token does not belong to user " + escaped(claim->userName);
    else if (!isPlainAbsolutePath(path))
        reason = escaped(path) + " is not a valid path on a storage box";
    else if (!(root = findServedRoot(*connection, user->companyId, m_BoxCode, path, accessOf(use))))
        reason = escaped(path) + " is not on a disk of box " + m_BoxCode + " that user " + user->name +
                 (use == Use::Read ? " may use" : " may write to");
    else if (overlap(m_Pool.dataFolder(), path)) // also above it: a request may go on below its path
        reason = escaped(path) + " is in the centre's data folder or holds it";
    else if (use == Use::Read)
        return Place{root->path, pathBelow(root->path, path)};
    else if (mayWrite(*connection, *user, *claim, m_BoxCode, *root, path, reason))
        return Place{root->path, pathBelow(root->path, path), packagesBelow(*connection, m_BoxCode, path)};
    return std::nullopt;
}

bool DataFolderCatalogue::mayUse(const std::string& token, Use use)
{
    ConnectionPool::Lease connection(m_Pool);
    std::string reason;
    const std::optional<User> user = connection->user(token, reason);
    return user && (use == Use::Read || user->mayWrite());
}

void DataFolderCatalogue::record(const std::vector<Entry>& entries)
try {
    registerAll(entries);
} catch (const DatabaseError& error) {
    if (error.kind() == DatabaseError::Kind::Full)
        throw bulkhaul::FileFailure(haulbox::NO_SPACE, "the catalogue: " + std::string(error.what()));
    throw;
}

void DataFolderCatalogue::registerAll(const std::vector<Entry>& entries)
{
    m_Pool.change([&](Connection& connection) {
        Recorder recorder(connection, m_BoxCode);
        for (const Entry& entry : entries)
            recorder.add(entry);
        return true;
    });
}

} // namespace centre
