#include "components/bulkhaul/files/SourceFile.h"

#include "components/bulkhaul/files/Chunks.h"
#include "components/bulkhaul/files/FileFailure.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdint>

namespace bulkhaul {

namespace {

struct stat statusOf(const FileHandle& file, const std::string& name)
{
    struct stat status;
    if (::fstat(file.get(), &status) != 0)
        throwErrno(haulbox::UNREADABLE, name);
    return status;
}

} // namespace

std::string versionOf(const struct stat& status)
{
    std::string version;
    const auto append = [&version](auto number, const char* end) {
        char hex[16];
        const auto unsignedNumber = static_cast<std::uint64_t>(number);
        version.append(hex, std::to_chars(hex, hex + sizeof hex, unsignedNumber, 16).ptr).append(end);
    };
    version.reserve(80);
    append(status.st_ino, "-");
    append(status.st_size, "-");
    append(status.st_mtim.tv_sec, ".");
    append(status.st_mtim.tv_nsec, "-");
    append(status.st_ctim.tv_sec, ".");
    append(status.st_ctim.tv_nsec, "");
    return version;
}

SourceFile::SourceFile(const Folder& folder, const std::string& name, Links links)
    // O_NONBLOCK, because opening a pipe would wait for a writer.
    : m_File(::openat(folder.get(), name.c_str(),
                      O_RDONLY | O_CLOEXEC | O_NONBLOCK | (links == Links::Refuse ? O_NOFOLLOW : 0))),
      m_Name(name)
{
    if (!m_File)
        throwErrno(haulbox::UNREADABLE, name);
    const struct stat status = statusOf(m_File, name);
    if (!S_ISREG(status.st_mode))
        throw FileFailure(haulbox::WRONG_KIND, name + ": not a file");
    m_Size = static_cast<std::uint64_t>(status.st_size);
    m_Version = versionOf(status);
}

void SourceFile::read(std::uint64_t chunk, std::string& data) const
{
    data.resize(chunkLength(m_Size, chunk));
    read(chunk, data.data());
}

void SourceFile::read(std::uint64_t chunk, char* data) const
{
    const std::size_t length = chunkLength(m_Size, chunk);
    for (std::size_t filled = 0; filled < length;) {
        const ssize_t count = ::pread(m_File.get(), data + filled, length - filled,
                                      static_cast<off_t>(chunk * kChunkSize + filled));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throwErrno(haulbox::UNREADABLE, m_Name);
        if (count == 0)
            throw FileFailure(haulbox::CHANGED, m_Name + ": became shorter while it was read");
        filled += static_cast<std::size_t>(count);
    }
    requireUnchanged();
}

void SourceFile::requireUnchanged() const
{
    if (versionOf(statusOf(m_File, m_Name)) != m_Version)
        throw FileFailure(haulbox::CHANGED, m_Name + ": changed while it was read");
}

} // namespace bulkhaul
