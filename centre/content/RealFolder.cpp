#include "centre/content/RealFolder.h"

#include "components/bulkhaul/files/PartialFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

namespace centre {

namespace {

RealEntry::Kind kindOf(mode_t mode)
{
    if (S_ISREG(mode))
        return RealEntry::Kind::File;
    if (S_ISDIR(mode))
        return RealEntry::Kind::Folder;
    return S_ISLNK(mode) ? RealEntry::Kind::Link : RealEntry::Kind::Special;
}

/// Returns the entry; nothing if it has gone. Only a file, and an entry whose folder does not say its kind,
/// needs a system call of its own.
std::optional<RealEntry> describe(int folder, const dirent& found)
{
    const std::string name = found.d_name;
    if (bulkhaul::isPartialName(name))
        return RealEntry{name, RealEntry::Kind::Partial, 0};
    if (found.d_type != DT_UNKNOWN && found.d_type != DT_REG)
        return RealEntry{name, kindOf(DTTOIF(found.d_type)), 0};
    struct stat status = {};
    if (::fstatat(folder, found.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0)
        return RealEntry{name, kindOf(status.st_mode), static_cast<std::uint64_t>(status.st_size)};
    if (errno == ENOENT)
        return std::nullopt;
    return RealEntry{name, RealEntry::Kind::Unreadable, 0, std::strerror(errno)};
}

} // namespace

std::string readRealFolder(const std::string& path, std::vector<RealEntry>& entries)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(path.c_str()), &::closedir);
    if (!folder)
        return std::strerror(errno);
    const dirent* found = nullptr;
    for (errno = 0; (found = ::readdir(folder.get())) != nullptr; errno = 0) {
        if (std::strcmp(found->d_name, ".") == 0 || std::strcmp(found->d_name, "..") == 0)
            continue;
        if (std::optional<RealEntry> entry = describe(::dirfd(folder.get()), *found))
            entries.push_back(std::move(*entry));
    }
    if (errno != 0)
        return std::strerror(errno);
    std::sort(entries.begin(), entries.end(),
              [](const RealEntry& one, const RealEntry& other) { return one.name < other.name; });
    return {};
}

} // namespace centre
