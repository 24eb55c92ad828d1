#include "centre/forge/ServerCopy.h"

#include "centre/base/Cancellation.h"
#include "centre/base/Error.h"
#include "centre/base/Path.h"
#include "centre/base/Text.h"
#include "centre/forge/StoragePlace.h"
#include "centre/store/Ownership.h"
#include "components/bulkhaul/files/IncomingFile.h"
#include "components/bulkhaul/files/SourceFile.h"

#include <algorithm>
#include <filesystem>

namespace centre {

namespace {

using bulkhaul::Folder;

/// Returns the path without doubled separators and without one at its end.
std::string plainPath(std::string path)
{
    const auto bothSeparators = [](char one, char next) { return one == '/' && next == '/'; };
    path.erase(std::unique(path.begin(), path.end(), bothSeparators), path.end());
    if (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

bool isFolder(const Folder& folder, const std::string& name)
{
    struct stat status = {};
    return folder.find(name, status) && S_ISDIR(status.st_mode);
}

void requireFree(const Folder& folder, const std::string& name, bool overwrite)
{
    struct stat status = {};
    if (!folder.find(name, status))
        return;
    if (!overwrite)
        throw refusal(escaped(name) + " exists already and is not to be overwritten");
    if (!S_ISREG(status.st_mode))
        throw refusal(escaped(name) + " exists already and is not a file");
}

/// Copies a file whole or leaves nothing: no later copy would go on with a part.
void copy(const bulkhaul::SourceFile& source, Folder to, const std::string& name, bool overwrite,
          const IsCanceled& isCanceled)
{
    bulkhaul::IncomingFile target(std::move(to), name, source.size(), bulkhaul::Existing::Replace);
    try {
        std::string data;
        std::uint64_t chunk = 0;
        do { // also for an empty file: from the first write on nobody else can take the name
            requireNotCanceled(isCanceled);
            source.read(chunk, data);
            target.write(chunk, bulkhaul::piecesOf(data), bulkhaul::digestOf(data));
        } while (++chunk < bulkhaul::chunkCount(source.size()));
        source.requireUnchanged();
        requireFree(target.folder(), name, overwrite);
        target.finish();
    } catch (...) {
        target.discard();
        throw;
    }
    target.folder().flush();
}

} // namespace

ServerCopy::ServerCopy(ConnectionPool& pool, const std::vector<std::string>& copyRoots) : m_Pool(pool)
{
    for (const std::string& root : copyRoots) {
        std::error_code error;
        const std::string path = std::filesystem::canonical(root, error).string();
        if (error || !std::filesystem::is_directory(path))
            throw Error(ExitCode::WrongUse, "a copy root must be a folder: " + escaped(root));
        if (overlap(pool.dataFolder(), path))
            throw Error(ExitCode::WrongUse,
                        escaped(path) +
                            " is in the centre's data folder or holds it, and can't be a copy root");
        m_Roots.push_back(path);
    }
}

/// The innermost root that the path lies in.
std::string ServerCopy::requireRoot(const std::string& path) const
{
    if (!isPlainAbsolutePath(path))
        throw refusal(abbreviated(path) + " is not a plain absolute path, /FOLDER/NAME");
    std::string found;
    for (const std::string& root : m_Roots)
        if (isAtOrBelow(root, path) && root.size() > found.size())
            found = root;
    if (!found.empty())
        return found;
    std::string all;
    for (const std::string& root : m_Roots)
        all += (all.empty() ? "" : ", ") + escaped(root);
    throw refusal(abbreviated(path) + " lies in no folder that the centre copies from and to; " +
                  (all.empty() ? "there is none, see serve --copy-root" : "those are " + all));
}

std::uint32_t ServerCopy::makeFolder(const User& user, const forgeserver::CreateFolderReq& request)
{
    requireWriter(user);
    const std::vector<std::string> names = bulkhaul::splitBelow(request.folder_path());
    if (names.empty())
        throw refusal("the folder has no name");
    std::uint32_t id = 0;
    m_Pool.change([&](Connection& connection) {
        FolderPlace place =
            placeOfFolder(connection, user, m_Pool.dataFolder(), request.first_id(), request.second_id());
        id = connection.storageTree().makeFolders(place.diskId, place.folderId, names);
        // Again, because the new folder may lie in the data folder.
        place = placeOfFolder(connection, user, Access::Write, m_Pool.dataFolder(), id);
        if (place.isLocal())
            place.open(Folder::Missing::MakeFlushed);
        return true;
    });
    return id;
}

void ServerCopy::copyIn(const User& user, const forgeserver::FileCopyToDbReq& request,
                        const IsCanceled& isCanceled)
{
    requireWriter(user);
    const std::string path = plainPath(request.src_file());
    const std::string root = requireRoot(path);
    if (path == root)
        throw refusal(escaped(root) + " is not a file");
    const std::string name = lastName(path);
    const bulkhaul::SourceFile source(
        Folder::open(root).below(bulkhaul::splitBelow(pathBelow(root, folderAbove(path)))), name);
    const std::vector<std::string> names = bulkhaul::splitBelow(request.relative_path());

    FolderPlace place;
    {
        ConnectionPool::Lease connection(m_Pool);
        place = placeOfFolder(*connection, user, m_Pool.dataFolder(), request.target_a(), request.target_b());
    }
    const FolderPlace start = place;
    place.below.insert(place.below.end(), names.begin(), names.end());
    requireOutside(m_Pool.dataFolder(), place);
    if (!bulkhaul::isMovableName(name))
        throw refusal(escaped(name) + " can't be a file's name");
    Folder target = place.open(Folder::Missing::MakeFlushed);
    requireFree(target, name, request.copy_flag());
    copy(source, std::move(target), name, request.copy_flag(), isCanceled);

    m_Pool.change([&](Connection& connection) {
        StorageTree& storageTree = connection.storageTree();
        storageTree.addFile(storageTree.makeFolders(start.diskId, start.folderId, names), name,
                            {source.size()});
        return true;
    });
}

void ServerCopy::copyOut(const User& user, const forgeserver::FileCopyFromDbReq& request,
                         const IsCanceled& isCanceled)
{
    requireWriter(user); // it changes folders of the centre's machine
    const std::string path = plainPath(request.dist_path());
    const std::string root = requireRoot(path);
    FilePlace place;
    {
        ConnectionPool::Lease connection(m_Pool);
        place = placeOfFile(*connection, user, Access::Read, m_Pool.dataFolder(), request.source_id());
    }
    std::vector<std::string> below = bulkhaul::splitBelow(pathBelow(root, path));
    std::string name = place.name;
    Folder target = Folder::open(root);
    if (!below.empty()) {
        const std::string last = below.back();
        below.pop_back();
        target = target.below(below);
        if (isFolder(target, last))
            target = target.below(last);
        else if (request.dist_path().back() == '/')
            throw refusal(escaped(path) + " is not a folder");
        else
            name = last;
    }
    requireFree(target, name, request.copy_flag());
    copy(bulkhaul::SourceFile(place.folder.open(), place.name), std::move(target), name, request.copy_flag(),
         isCanceled);
}

} // namespace centre
