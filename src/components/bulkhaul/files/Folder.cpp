#include "components/bulkhaul/files/Folder.h"

#include "components/bulkhaul/files/FileFailure.h"
#include "components/bulkhaul/files/PartialFile.h"
#include "lumo/components/platform/PathComponent.h"
#include "lumo/components/platform/Utf8.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>

namespace bulkhaul {

namespace {

constexpr std::size_t kDeepest = 256; // nested folders: each needs a file descriptor while a tree is walked
constexpr mode_t kFolderMode = 0777;

haulbox::Status statusOf(int error, haulbox::Status otherwise)
{
    switch (error) {
    case ENOENT:
        return otherwise == haulbox::UNREADABLE ? haulbox::NOT_FOUND : otherwise;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return haulbox::NO_SPACE;
    case ELOOP:
    case ENOTDIR:
    case EISDIR:
        return haulbox::WRONG_KIND;
    default:
        return otherwise;
    }
}

} // namespace

void throwErrno(haulbox::Status otherwise, const std::string& name)
{
    const int error = errno;
    throw FileFailure(statusOf(error, otherwise), name + ": " + std::strerror(error));
}

FileHandle::~FileHandle()
{
    if (m_Descriptor >= 0)
        ::close(m_Descriptor);
}

bool isMovableName(const std::string& name)
{
    return platform::isPathComponent(name) && name.size() <= NAME_MAX && platform::isUtf8(name) &&
           !isPartialName(name);
}

std::vector<std::string> splitBelow(const std::string& below)
{
    std::vector<std::string> components;
    if (below.size() >= PATH_MAX)
        throw FileFailure(haulbox::UNSAFE_NAME, "a path of " + std::to_string(below.size()) + " bytes");
    for (std::size_t begin = 0; !below.empty() && begin <= below.size();) {
        const std::size_t end = std::min(below.find('/', begin), below.size());
        components.push_back(below.substr(begin, end - begin));
        if (components.size() > kDeepest)
            throw FileFailure(haulbox::UNSAFE_NAME,
                              "more than " + std::to_string(kDeepest) + " nested folders: " + below);
        if (!isMovableName(components.back()))
            throw FileFailure(haulbox::UNSAFE_NAME, "not a name of a file or folder: " + below);
        begin = end + 1;
    }
    return components;
}

std::pair<std::string, std::string> splitPath(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    if (!isMovableName(name))
        throw FileFailure(haulbox::UNSAFE_NAME, "not a path of a file or folder: " + path);
    if (slash == std::string::npos)
        return {".", name};
    return {path.substr(0, std::max<std::size_t>(slash, 1)), name};
}

Folder Folder::open(const std::string& path, haulbox::Status otherwise)
{
    FileHandle handle(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!handle)
        throwErrno(otherwise, path);
    return Folder(std::move(handle));
}

Folder Folder::below(const std::string& name, Missing missing, bool* made) const
{
    bool isNew = false;
    const int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    FileHandle handle(::openat(get(), name.c_str(), flags));
    if (!handle && errno == ENOENT && missing != Missing::Fail) {
        isNew = ::mkdirat(get(), name.c_str(), kFolderMode) == 0;
        if (!isNew && errno != EEXIST)
            throwErrno(haulbox::NOT_WRITABLE, name);
        if (isNew && missing == Missing::MakeFlushed)
            flush();
        handle = FileHandle(::openat(get(), name.c_str(), flags));
    }
    if (!handle)
        throwErrno(missing == Missing::Fail ? haulbox::UNREADABLE : haulbox::NOT_WRITABLE, name);
    if (made != nullptr)
        *made = isNew;
    return Folder(std::move(handle));
}

Folder Folder::below(const std::vector<std::string>& components, Missing missing) const
{
    Folder folder(FileHandle(::fcntl(get(), F_DUPFD_CLOEXEC, 0)));
    if (!folder.m_Handle)
        throwErrno(haulbox::FAILED, "a folder");
    for (const std::string& component : components)
        folder = folder.below(component, missing);
    return folder;
}

bool Folder::find(const std::string& name, struct stat& status) const
{
    if (::fstatat(get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0)
        return true;
    if (errno != ENOENT)
        throwErrno(haulbox::UNREADABLE, name);
    return false;
}

std::vector<Folder::Entry> Folder::entries() const
{
    // A file description of its own, so that no other reader moves its position.
    FileHandle own(::openat(get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::unique_ptr<DIR, int (*)(DIR*)> stream(own ? ::fdopendir(own.get()) : nullptr, &::closedir);
    if (!stream)
        throwErrno(haulbox::UNREADABLE, "a folder");
    own.release();
    std::vector<Entry> found;
    errno = 0;
    while (const dirent* entry = ::readdir(stream.get())) {
        const std::string name = entry->d_name;
        if (name == "." || name == ".." || isPartialName(name))
            continue;
        unsigned char type = entry->d_type;
        if (type == DT_UNKNOWN) {
            struct stat status;
            if (find(name, status))
                type = IFTODT(status.st_mode);
        }
        found.push_back({name, type == DT_DIR, type == DT_REG});
        errno = 0;
    }
    if (errno != 0)
        throwErrno(haulbox::UNREADABLE, "a folder");
    std::sort(found.begin(), found.end(), [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return found;
}

void Folder::flush() const
{
    if (::fsync(get()) != 0)
        throwErrno(haulbox::NOT_WRITABLE, "a folder");
}

const Folder& FolderCache::parentOf(const std::string& below, std::string& name)
{
    const std::size_t slash = below.rfind('/');
    const std::size_t length = slash == std::string::npos ? 0 : slash;
    name = below.substr(length == 0 ? 0 : slash + 1);
    // The folder of the last path, whose components were checked then, or the root.
    const bool isKnown = length == 0
                             ? slash == std::string::npos
                             : m_Last && m_Path.size() == length && below.compare(0, length, m_Path) == 0;
    if (isKnown && below.size() < PATH_MAX && isMovableName(name))
        return length == 0 ? m_Root : *m_Last;
    std::vector<std::string> path = splitBelow(below);
    if (path.empty())
        throw FileFailure(haulbox::UNSAFE_NAME, "a file without a name");
    path.pop_back();
    if (path.empty())
        return m_Root;
    m_Last = m_Root.below(path, m_Missing);
    m_Path = below.substr(0, length);
    return *m_Last;
}

} // namespace bulkhaul
