#include "components/bulkhaul/files/PartialFile.h"

#include "components/bulkhaul/files/FileFailure.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <thread>

namespace bulkhaul {

namespace {

const std::string kPartialEnding = ".lumo-part";
constexpr mode_t kFileMode = 0666;
constexpr std::chrono::milliseconds kPause(5);
constexpr std::size_t kWrittenEarly = kChunkSize / 4;

/// Returns the partial file's name. A name that is too long to be extended is replaced by its digest.
std::string partialName(const std::string& name)
{
    if (name.size() + kPartialEnding.size() < NAME_MAX)
        return "." + name + kPartialEnding;
    return "." + toHex(digestOf(name)) + kPartialEnding;
}

/// The bytes of one write. Linux puts a longer one into larger pieces of memory, which were measured to take
/// ten times as long to get in a virtual machine: a host takes back whole pieces that are free.
constexpr std::size_t kMostAtOnce = std::size_t(256) << 10;

/// Returns the first bytes of the pieces from `first` on, as many as one write has.
Pieces frontOf(const Pieces& pieces, std::size_t first)
{
    Pieces front;
    for (std::size_t room = kMostAtOnce; first < pieces.size() && room > 0 && front.size() < IOV_MAX;
         ++first) {
        front.push_back({pieces[first].iov_base, std::min(room, pieces[first].iov_len)});
        room -= front.back().iov_len;
    }
    return front;
}

/// Removes `count` bytes from the front of the pieces, of which the first `first` are empty.
void dropFront(Pieces& pieces, std::size_t& first, std::size_t count)
{
    for (; first < pieces.size() && count >= pieces[first].iov_len; ++first)
        count -= pieces[first].iov_len;
    if (count > 0) {
        pieces[first].iov_base = static_cast<char*>(pieces[first].iov_base) + count;
        pieces[first].iov_len -= count;
    }
}

bool hasChanged(const struct stat& before, const struct stat& now)
{
    return before.st_size != now.st_size || before.st_mtim.tv_sec != now.st_mtim.tv_sec ||
           before.st_mtim.tv_nsec != now.st_mtim.tv_nsec;
}

} // namespace

bool isPartialName(const std::string& name)
{
    return name.size() > kPartialEnding.size() + 1 && name.front() == '.' &&
           name.compare(name.size() - kPartialEnding.size(), kPartialEnding.size(), kPartialEnding) == 0;
}

bool isFileOrLink(const Folder& folder, const std::string& name)
{
    struct stat status;
    return folder.find(name, status) && (S_ISREG(status.st_mode) || S_ISLNK(status.st_mode));
}

bool findFile(const Folder& folder, const std::string& name, struct stat& status)
{
    if (!folder.find(name, status))
        return false;
    if (S_ISREG(status.st_mode))
        return true;
    if (S_ISLNK(status.st_mode))
        return false; // replaced, not followed
    throw FileFailure(haulbox::WRONG_KIND, name + ": the name belongs to something that is not a file");
}

Digest digestAt(int file, std::uint64_t offset, std::size_t length, const std::string& name)
{
    std::string data(length, '\0');
    std::size_t filled = 0;
    while (filled < length) {
        const ssize_t count =
            ::pread(file, &data[filled], length - filled, static_cast<off_t>(offset + filled));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throwErrno(haulbox::NOT_WRITABLE, name);
        if (count == 0)
            break; // the old file ends inside this chunk
        filled += static_cast<std::size_t>(count);
    }
    return digestOf(data.data(), filled);
}

PartialFile::PartialFile(const Folder& folder, const std::string& target, Missing missing, Waiting waiting)
    : m_Target(target)
{
    const std::string name = partialName(target);
    const int flags = O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | (missing == Missing::Make ? O_CREAT : 0);
    do {
        m_File = FileHandle(::openat(folder.get(), name.c_str(), flags, kFileMode));
        if (!m_File && errno == ENOENT && missing == Missing::None)
            return;
        if (!m_File)
            throwErrno(haulbox::NOT_WRITABLE, name);
        lock(waiting);
        struct stat status;
        if (::fstat(m_File.get(), &status) != 0)
            throwErrno(haulbox::NOT_WRITABLE, name);
        if (!S_ISREG(status.st_mode) || status.st_nlink > 1)
            throw FileFailure(haulbox::WRONG_KIND, name + ": not a partial file");
        m_Inode = status.st_ino;
        m_Device = status.st_dev;
        m_Size = static_cast<std::uint64_t>(status.st_size);
    } while (!isCurrent(folder));
}

/// A transfer whose connection broke may still be writing. The system has no lock with a time limit.
void PartialFile::lock(Waiting waiting) const
{
    typedef std::chrono::steady_clock Clock;
    auto end = Clock::now() + waiting.most;
    struct stat before = {};
    while (::flock(m_File.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            throwErrno(haulbox::NOT_WRITABLE, m_Target);
        struct stat now;
        if (waiting.renewed && ::fstat(m_File.get(), &now) == 0 && hasChanged(before, now)) {
            before = now;
            end = Clock::now() + waiting.most;
        }
        if (Clock::now() >= end)
            throw FileFailure(haulbox::BUSY, m_Target + ": another transfer writes to it");
        std::this_thread::sleep_for(kPause);
    }
}

/// Whether the name is still that of the open file: the former owner of the lock may have renamed it.
bool PartialFile::isCurrent(const Folder& folder) const
{
    struct stat named;
    return folder.find(partialName(m_Target), named) && named.st_ino == m_Inode;
}

void PartialFile::resize(std::uint64_t size) const
{
    if (::ftruncate(m_File.get(), static_cast<off_t>(size)) != 0)
        throwErrno(haulbox::NOT_WRITABLE, m_Target);
}

void PartialFile::write(Pieces pieces, std::uint64_t offset) const
{
    const std::size_t size = sizeOf(pieces);
    std::size_t first = 0;
    for (std::size_t written = 0; written < size;) {
        const Pieces front = frontOf(pieces, first);
        const ssize_t count = ::pwritev(m_File.get(), front.data(), static_cast<int>(front.size()),
                                        static_cast<off_t>(offset + written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throwErrno(haulbox::NOT_WRITABLE, m_Target);
        written += static_cast<std::size_t>(count);
        dropFront(pieces, first, static_cast<std::size_t>(count));
    }
    // Writes to the disk while more chunks arrive, so that the flush at the end takes less time. A failure
    // does no harm: the flush then writes everything. Small files are better written together.
    if (size >= kWrittenEarly)
        ::sync_file_range(m_File.get(), static_cast<off_t>(offset), static_cast<off_t>(size),
                          SYNC_FILE_RANGE_WRITE);
}

void PartialFile::flush() const
{
    if (::fdatasync(m_File.get()) != 0)
        throwErrno(haulbox::NOT_WRITABLE, m_Target);
}

bool PartialFile::giveName(const Folder& folder, Existing existing) const
{
    if (!isCurrent(folder))
        throw FileFailure(haulbox::BUSY, m_Target + ": its partial file was removed");
    const std::string partial = partialName(m_Target);
    if (::renameat2(folder.get(), partial.c_str(), folder.get(), m_Target.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EEXIST && errno != EINVAL && errno != ENOSYS)
        throwErrno(haulbox::NOT_WRITABLE, m_Target);
    // EINVAL, ENOSYS: the file system can't do it in one step.
    if (existing == Existing::Keep && isFileOrLink(folder, m_Target)) {
        ::unlinkat(folder.get(), partial.c_str(), 0);
        return false;
    }
    struct stat status;
    findFile(folder, m_Target, status); // throws for what a file can't replace
    if (::renameat(folder.get(), partial.c_str(), folder.get(), m_Target.c_str()) != 0)
        throwErrno(haulbox::NOT_WRITABLE, m_Target);
    return true;
}

void PartialFile::remove(const Folder& folder) const
{
    if (isCurrent(folder))
        ::unlinkat(folder.get(), partialName(m_Target).c_str(), 0);
}

} // namespace bulkhaul
