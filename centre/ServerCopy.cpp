#include "centre/ServerCopy.h"

#include "centre/BoxPath.h"
#include "centre/Error.h"
#include "centre/Ownership.h"
#include "centre/StoragePlace.h"
#include "centre/Text.h"
#include "components/bulkhaul/IncomingFile.h"
#include "components/bulkhaul/SourceFile.h"

#include <filesystem>

namespace centre {

namespace {

using bulkhaul::Folder;

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
        throw refusal(escaped(name) + " is there already and is not to be overwritten");
    if (!S_ISREG(status.st_mode))
        throw refusal(escaped(name) + " is there already and is no file");
}

void copy(const Folder& from, const std::string& fromName, Folder to, const std::string& toName)
{
    const bulkhaul::SourceFile source(from, fromName);
    bulkhaul::IncomingFile target(std::move(to), toName, source.size());
    std::string data;
    for (std::uint64_t chunk = 0; chunk < bulkhaul::chunkCount(source.size()); ++chunk) {
        source.read(chunk, data);
        target.write(chunk, data, bulkhaul::digestOf(data));
    }
    source.requireUnchanged();
    target.finish();
    target.folder().flush();
}

} // namespace

ServerCopy::ServerCopy(ConnectionPool& pool, const std::vector<std::string>& copyRoots) : m_Pool(pool)
{
    for (const std::string& root : copyRoots) {
        std::error_code error;
        const std::string path = std::filesystem::canonical(root, error).string();
        if (error || !std::filesystem::is_directory(path))
            throw Error(ExitCode::WrongUse, "not a folder to copy from and to: " + escaped(root));
        if (overlap(pool.dataFolder(), path))
            throw Error(ExitCode::WrongUse,
                        escaped(path) +
                            " is in the centre's data folder or holds it; nothing is copied there");
        m_Roots.push_back(path);
    }
}

/// The innermost root that the path lies in.
std::string ServerCopy::requireRoot(const std::string& path) const
{
    std::string found;
    if (isBoxPath(path))
        for (const std::string& root : m_Roots)
            if (isAtOrBelow(root, path) && root.size() > found.size())
                found = root;
    if (!found.empty())
        return found;
    std::string all;
    for (const std::string& root : m_Roots)
        all += (all.empty() ? "" : ", ") + escaped(root);
    throw refusal(escaped(path.substr(0, 200)) + " lies in no folder that the centre copies from and to; " +
                  (all.empty() ? "there is none, see serve --copy-root" : "those are " + all));
}

std::uint32_t ServerCopy::makeFolder(const User& user, const forgeserver::CreateFolderReq& request)
{
    requireWriter(user);
    const std::vector<std::string> names = bulkhaul::splitBelow(request.folder_path());
    if (names.empty())
        throw refusal("the folder has no name");
    const std::lock_guard<std::mutex> lock(m_Pool.changing());
    ConnectionPool::Lease connection(m_Pool);
    SQLite::Transaction transaction(connection->database(), SQLite::TransactionBehavior::IMMEDIATE);
    FolderPlace place =
        placeOfFolder(*connection, user, m_Pool.dataFolder(), request.first_id(), request.second_id());
    const std::uint32_t id = connection->registration().makeFolders(place.diskId, place.folderId, names);
    // Again, because it may have come to lie in the data folder.
    place = placeOfFolder(*connection, user, m_Pool.dataFolder(), id);
    if (place.isLocal())
        place.open(Folder::Missing::MakeFlushed);
    transaction.commit();
    return id;
}

void ServerCopy::copyIn(const User& user, const forgeserver::FileCopyToDbReq& request)
{
    requireWriter(user);
    const std::string root = requireRoot(request.src_file());
    if (request.src_file() == root)
        throw refusal(escaped(root) + " is no file");
    const Folder source =
        Folder::open(root).below(bulkhaul::splitBelow(pathBelow(root, folderAbove(request.src_file()))));
    const std::string name = lastName(request.src_file());
    const std::vector<std::string> names = bulkhaul::splitBelow(request.relative_path());

    FolderPlace place;
    {
        ConnectionPool::Lease connection(m_Pool);
        place = placeOfFolder(*connection, user, m_Pool.dataFolder(), request.target_a(), request.target_b());
    }
    const FolderPlace start = place;
    place.below.insert(place.below.end(), names.begin(), names.end());
    requireOutside(m_Pool.dataFolder(), place);
    if (!bulkhaul::isSafeName(name))
        throw refusal(escaped(name) + " can't be a file's name");
    Folder target = place.open(Folder::Missing::MakeFlushed);
    requireFree(target, name, request.copy_flag());
    copy(source, name, std::move(target), name);

    const std::lock_guard<std::mutex> lock(m_Pool.changing());
    ConnectionPool::Lease connection(m_Pool);
    SQLite::Transaction transaction(connection->database(), SQLite::TransactionBehavior::IMMEDIATE);
    Registration& registration = connection->registration();
    registration.addFile(registration.makeFolders(start.diskId, start.folderId, names), name);
    transaction.commit();
}

void ServerCopy::copyOut(const User& user, const forgeserver::FileCopyFromDbReq& request)
{
    requireWriter(user); // it changes folders of the centre's machine
    const std::string root = requireRoot(request.dist_path());
    FilePlace place;
    {
        ConnectionPool::Lease connection(m_Pool);
        place = placeOfFile(*connection, user, m_Pool.dataFolder(), request.source_id());
    }
    std::vector<std::string> below = bulkhaul::splitBelow(pathBelow(root, request.dist_path()));
    std::string name = place.name;
    Folder target = Folder::open(root);
    if (!below.empty()) {
        const std::string last = below.back();
        below.pop_back();
        target = target.below(below);
        if (isFolder(target, last))
            target = target.below(last);
        else
            name = last;
    }
    requireFree(target, name, request.copy_flag());
    copy(place.folder.open(), place.name, std::move(target), name);
}

} // namespace centre
