#include "cli/base/LocalFiles.h"

#include "cli/base/ExitCode.h"

#include "lumo/components/platform/Utf8.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace cli {

namespace {

namespace fs = std::filesystem;

void requireUtf8(const std::string& path)
{
    if (!platform::isUtf8(path))
        refuse("'" + path + "' is not UTF-8: names travel as UTF-8 only");
}

/// Returns the bytes of the files below the folder `name` of an open folder. What can't be read counts as
/// nothing.
std::uint64_t bytesBelow(int parent, const char* name)
{
    const int folder = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(folder < 0 ? nullptr : ::fdopendir(folder),
                                                      &::closedir);
    std::uint64_t sum = 0;
    while (const dirent* entry = entries ? ::readdir(entries.get()) : nullptr) {
        const std::string entryName = entry->d_name;
        struct stat status;
        if (entryName == "." || entryName == ".." || entry->d_type == DT_LNK || isPartialName(entryName))
            continue;
        if (entry->d_type == DT_DIR)
            sum += bytesBelow(folder, entry->d_name);
        else if (::fstatat(folder, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0)
            sum += S_ISREG(status.st_mode)   ? static_cast<std::uint64_t>(status.st_size)
                   : S_ISDIR(status.st_mode) ? bytesBelow(folder, entry->d_name)
                                             : 0;
    }
    return sum;
}

} // namespace

bool isPartialName(const std::string& name)
{
    static const std::string ending = ".lumo-part";
    return name.size() > ending.size() && name.front() == '.' &&
           name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
}

LocalSource localSource(const std::string& path)
{
    requireUtf8(path);
    fs::path plain = path;
    while (!plain.has_filename() && plain.has_relative_path())
        plain = plain.parent_path();
    std::error_code error;
    if (plain.filename() == "." || plain.filename() == "..")
        plain = fs::canonical(plain, error);
    const fs::file_status status = fs::status(plain, error);
    if (!fs::exists(status)) {
        refuse("'" + path +
               "' can't be sent: " + (error ? error.message() : "there is no such file or folder"));
    }
    LocalSource source{plain.string(), plain.filename().string(), fs::is_directory(status), 0};
    if (!source.folder && !fs::is_regular_file(status))
        refuse("'" + path + "' is neither a file nor a folder");
    if (source.name.empty() || source.name == "/")
        refuse("'" + path + "' has no name that it could get in the catalogue");
    if (access(source.path.c_str(), source.folder ? R_OK | X_OK : R_OK) != 0)
        refuse("can't read '" + path + "': " + std::strerror(errno));
    source.bytes = bytesOf(source.path);
    return source;
}

TemporaryFolder::TemporaryFolder()
{
    std::error_code error;
    m_Path = (fs::temp_directory_path(error) / "lumo-XXXXXX").string();
    if (error || ::mkdtemp(m_Path.data()) == nullptr)
        refuse("can't make a temporary folder: " + (error ? error.message() : std::strerror(errno)));
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    fs::remove_all(m_Path, ignored);
}

std::ifstream openedFile(const std::string& path, const std::string& name)
{
    std::ifstream file(path, std::ios::binary);
    const std::string reason = std::strerror(errno);
    if (!file || isFolder(path))
        refuse("can't read " + name + ": " + (file ? "it is a folder" : reason));
    return file;
}

void makeFolder(const std::string& path)
{
    requireUtf8(path);
    std::error_code error;
    fs::create_directories(path, error);
    if (error || !isFolder(path)) {
        refuse("can't make the folder '" + path +
               "': " + (error ? error.message() : "something else has this name"));
    }
    if (access(path.c_str(), W_OK | X_OK) != 0)
        refuse("can't write into the folder '" + path + "': " + std::strerror(errno));
}

bool isFolder(const std::string& path)
{
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

bool isFileOrLink(const std::string& path)
{
    std::error_code ignored;
    const fs::file_status status = fs::symlink_status(path, ignored);
    return fs::is_regular_file(status) || (fs::is_symlink(status) && !isFolder(path));
}

std::uint64_t bytesOf(const std::string& path)
{
    std::error_code error;
    if (isFolder(path))
        return bytesBelow(AT_FDCWD, path.c_str());
    const std::uint64_t size = fs::file_size(path, error);
    return error ? 0 : size;
}

std::string below(const std::string& folder, const std::string& name)
{
    return (fs::path(folder) / name).lexically_normal().string();
}

} // namespace cli
