#include "centre/image/process/SceneFolder.h"

#include <cpl_vsi.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <unistd.h>
#include <utility>

namespace centre {

namespace {

const SceneFolder* s_Scene = nullptr;

struct OpenFile
{
    bulkhaul::FileHandle handle;
    vsi_l_offset place = 0;
    bool atEnd = false;
};

/// GDAL may name a file of the folder by a path with "./" in it, or with two separators.
std::string plain(const char* path)
{
    std::string result;
    for (const char* at = path; *at != '\0';) {
        const std::size_t length = std::strcspn(at, "/");
        const std::string name(at, length);
        if (!name.empty() && name != ".")
            result += (result.empty() ? "" : "/") + name;
        at += length + (at[length] == '/' ? 1 : 0);
    }
    return result;
}

int statFile(void*, const char* path, VSIStatBufL* result, int)
{
    struct stat status = {};
    if (s_Scene == nullptr || !s_Scene->find(plain(path), status))
        return -1;
    *result = {};
    result->st_mode = status.st_mode;
    result->st_size = status.st_size;
    result->st_mtime = status.st_mtime;
    return 0;
}

void* openFile(void*, const char* path, const char* access)
{
    if (s_Scene == nullptr || std::strpbrk(access, "wa+") != nullptr)
        return nullptr;
    bulkhaul::FileHandle handle = s_Scene->open(plain(path));
    return handle ? new OpenFile{std::move(handle)} : nullptr;
}

vsi_l_offset tell(void* file)
{
    return static_cast<OpenFile*>(file)->place;
}

int seek(void* pointer, vsi_l_offset offset, int from)
{
    auto& file = *static_cast<OpenFile*>(pointer);
    file.atEnd = false;
    struct stat status = {};
    if (from == SEEK_END && ::fstat(file.handle.get(), &status) != 0)
        return -1;
    file.place = offset + (from == SEEK_CUR ? file.place : 0) +
                 (from == SEEK_END ? static_cast<vsi_l_offset>(status.st_size) : 0);
    return 0;
}

std::size_t readFile(void* pointer, void* buffer, std::size_t size, std::size_t count)
{
    auto& file = *static_cast<OpenFile*>(pointer);
    std::size_t wanted = 0;
    if (size == 0 || __builtin_mul_overflow(size, count, &wanted))
        return 0;
    std::size_t done = 0;
    while (done < wanted) {
        const ssize_t more = ::pread(file.handle.get(), static_cast<char*>(buffer) + done, wanted - done,
                                     static_cast<off_t>(file.place + done));
        if (more < 0 && errno == EINTR)
            continue;
        if (more <= 0)
            break;
        done += static_cast<std::size_t>(more);
    }
    file.atEnd = done < wanted;
    file.place += done;
    return done / size;
}

int isAtEnd(void* file)
{
    return static_cast<OpenFile*>(file)->atEnd ? 1 : 0;
}

int closeFile(void* file)
{
    delete static_cast<OpenFile*>(file);
    return 0;
}

} // namespace

SceneFolder::SceneFolder(bulkhaul::FileHandle folder, std::string name, bulkhaul::FileHandle file, Open open)
    : m_Folder(std::move(folder)), m_Name(std::move(name)), m_File(std::move(file)), m_Open(std::move(open))
{
    s_Scene = this;
}

SceneFolder::~SceneFolder()
{
    s_Scene = nullptr;
}

bulkhaul::FileHandle SceneFolder::open(const std::string& path) const
{
    struct stat status = {};
    if (path == m_Name)
        return bulkhaul::FileHandle(::fcntl(m_File.get(), F_DUPFD_CLOEXEC, 0));
    // The other side is asked for what exists only: GDAL looks for many names.
    return path.find('/') != std::string::npos || find(path, status) ? m_Open(path) : bulkhaul::FileHandle();
}

bool SceneFolder::find(const std::string& path, struct stat& status) const
{
    if (path == m_Name)
        return ::fstat(m_File.get(), &status) == 0;
    if (path.empty())
        return ::fstat(m_Folder.get(), &status) == 0;
    if (path.find('/') == std::string::npos)
        return ::fstatat(m_Folder.get(), path.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
               (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
    const bulkhaul::FileHandle file = m_Open(path);
    return file && ::fstat(file.get(), &status) == 0;
}

std::string SceneFolder::imagePath() const
{
    return kSceneRoot + m_Name;
}

void installSceneFileSystem()
{
    const std::unique_ptr<VSIFilesystemPluginCallbacksStruct,
                          decltype(&VSIFreeFilesystemPluginCallbacksStruct)>
        callbacks(VSIAllocFilesystemPluginCallbacksStruct(), &VSIFreeFilesystemPluginCallbacksStruct);
    callbacks->stat = statFile;
    callbacks->open = openFile;
    callbacks->tell = tell;
    callbacks->seek = seek;
    callbacks->read = readFile;
    callbacks->eof = isAtEnd;
    callbacks->close = closeFile;
    VSIInstallPluginHandler(kSceneRoot, callbacks.get());
}

} // namespace centre
