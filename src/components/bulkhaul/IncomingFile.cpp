#include "components/bulkhaul/IncomingFile.h"

#include "components/bulkhaul/FileFailure.h"
#include "components/bulkhaul/SourceFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <set>
#include <thread>

namespace bulkhaul {

namespace {

const std::string kPartialEnding = ".lumo-part";
constexpr mode_t kFileMode = 0666;
constexpr std::chrono::seconds kLongestWait(3);
constexpr std::chrono::milliseconds kPause(5);

/// Returns the partial file's name. A name that is too long to be extended is replaced by its digest.
std::string partialName(const std::string& name)
{
    if (name.size() + kPartialEnding.size() < NAME_MAX)
        return "." + name + kPartialEnding;
    std::string hex;
    for (const char byte : digestOf(name)) {
        char two[3];
        static_cast<void>(std::snprintf(two, sizeof two, "%02x", static_cast<unsigned char>(byte)));
        hex += two;
    }
    return "." + hex + kPartialEnding;
}

/// Whether `name` is still the file of `handle`: the former owner of the lock may have renamed it.
bool isCurrent(const Folder& folder, const std::string& name, const FileHandle& handle)
{
    struct stat named;
    struct stat opened;
    return folder.find(name, named) && ::fstat(handle.get(), &opened) == 0 && named.st_ino == opened.st_ino;
}

/// Locks a partial file. Waits a while, since a transfer whose connection broke may still be writing. The
/// system has no lock with a time limit.
void lockPartial(const FileHandle& file, const std::string& target)
{
    const auto end = std::chrono::steady_clock::now() + kLongestWait;
    while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            throwErrno(haulbox::NOT_WRITABLE, target);
        if (std::chrono::steady_clock::now() > end)
            throw FileFailure(haulbox::BUSY, target + ": another transfer writes to it");
        std::this_thread::sleep_for(kPause);
    }
}

/// Opens and locks the partial file of `target`. Returns an empty handle if there is none and not `create`.
FileHandle openPartial(const Folder& folder, const std::string& target, bool create)
{
    const std::string name = partialName(target);
    for (;;) {
        FileHandle handle(::openat(folder.get(), name.c_str(),
                                   O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | (create ? O_CREAT : 0),
                                   kFileMode));
        if (!handle && errno == ENOENT && !create)
            return handle;
        if (!handle)
            throwErrno(haulbox::NOT_WRITABLE, name);
        struct stat status;
        if (::fstat(handle.get(), &status) != 0)
            throwErrno(haulbox::NOT_WRITABLE, name);
        if (!S_ISREG(status.st_mode) || status.st_nlink > 1)
            throw FileFailure(haulbox::WRONG_KIND, name + ": not a partial file");
        lockPartial(handle, target);
        if (isCurrent(folder, name, handle))
            return handle;
    }
}

void resize(const FileHandle& file, std::uint64_t size, const std::string& name)
{
    if (::ftruncate(file.get(), static_cast<off_t>(size)) != 0)
        throwErrno(haulbox::NOT_WRITABLE, name);
}

void writeAll(int file, const std::string& data, std::uint64_t offset, const std::string& name)
{
    for (std::size_t written = 0; written < data.size();) {
        const ssize_t count =
            ::pwrite(file, &data[written], data.size() - written, static_cast<off_t>(offset + written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throwErrno(haulbox::NOT_WRITABLE, name);
        written += static_cast<std::size_t>(count);
    }
    // Writes to the disk while more chunks arrive, so that the flush at the end takes less time. A failure
    // does no harm: the flush then writes everything.
    ::sync_file_range(file, static_cast<off_t>(offset), static_cast<off_t>(data.size()),
                      SYNC_FILE_RANGE_WRITE);
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

std::uint64_t sizeOf(const FileHandle& file, const std::string& name)
{
    struct stat status;
    if (::fstat(file.get(), &status) != 0)
        throwErrno(haulbox::NOT_WRITABLE, name);
    return static_cast<std::uint64_t>(status.st_size);
}

void flush(const FileHandle& file, const std::string& name)
{
    if (::fdatasync(file.get()) != 0)
        throwErrno(haulbox::NOT_WRITABLE, name);
}

/// Returns false where an existing file or link was kept instead.
bool giveName(const Folder& folder, const std::string& name, Existing existing)
{
    const std::string partial = partialName(name);
    if (existing == Existing::Keep) {
        if (::renameat2(folder.get(), partial.c_str(), folder.get(), name.c_str(), RENAME_NOREPLACE) == 0)
            return true;
        if (errno != EEXIST && errno != EINVAL && errno != ENOSYS)
            throwErrno(haulbox::NOT_WRITABLE, name);
        // EINVAL, ENOSYS: the file system can't do it in one step.
        if (isFileOrLink(folder, name)) {
            ::unlinkat(folder.get(), partial.c_str(), 0);
            return false;
        }
    }
    if (::renameat(folder.get(), partial.c_str(), folder.get(), name.c_str()) != 0)
        throwErrno(haulbox::NOT_WRITABLE, name);
    return true;
}

/// Whether a file of that name exists. Throws for an entry that a file can't replace.
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

} // namespace

bool isFileOrLink(const Folder& folder, const std::string& name)
{
    struct stat status;
    return folder.find(name, status) && (S_ISREG(status.st_mode) || S_ISLNK(status.st_mode));
}

bool isPartialName(const std::string& name)
{
    return name.size() > kPartialEnding.size() + 1 && name.front() == '.' &&
           name.compare(name.size() - kPartialEnding.size(), kPartialEnding.size(), kPartialEnding) == 0;
}

IncomingFile::IncomingFile(Folder folder, const std::string& name, std::uint64_t size, Existing existing)
    : m_Folder(std::move(folder)), m_Name(name), m_Size(size), m_Existing(existing)
{
    if (size > kLargestFile)
        throw FileFailure(haulbox::NO_SPACE, name + ": too large, " + std::to_string(size) + " bytes");
    struct stat target;
    const bool exists = findFile(m_Folder, name, target);
    m_Partial = openPartial(m_Folder, name, false);
    struct stat status;
    if (m_Partial && ::fstat(m_Partial.get(), &status) == 0 && status.st_size > 0) {
        m_FirstFound = m_Found = Found::Partial;
        m_FoundSize = std::min(size, static_cast<std::uint64_t>(status.st_size));
        return;
    }
    if (!exists || static_cast<std::uint64_t>(target.st_size) != size)
        return;
    m_OldTarget = FileHandle(::openat(m_Folder.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (m_OldTarget) {
        m_FirstFound = m_Found = Found::Target;
        m_FoundSize = size;
    }
}

Digest IncomingFile::foundDigest(std::uint64_t chunk)
{
    const int file = foundFile();
    return digestAt(file, chunk * kChunkSize, chunkLength(m_FoundSize, chunk), m_Name);
}

int IncomingFile::foundFile()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_Found == Found::Nothing)
        throw FileFailure(haulbox::FAILED, m_Name + ": the existing data is gone");
    return m_Found == Found::Target ? m_OldTarget.get() : m_Partial.get();
}

void IncomingFile::keep(std::uint64_t chunk, const Digest& digest)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_Found == Found::Nothing)
        throw FileFailure(haulbox::FAILED, m_Name + ": the existing data is gone");
    m_Digests.set(chunk, digest);
}

int IncomingFile::partial()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_Finished)
        throw FileFailure(haulbox::BUSY, m_Name + ": the upload has ended");
    if (!m_Partial)
        m_Partial = openPartial(m_Folder, m_Name, true);
    if (m_Found == Found::Target) { // its chunks can't be kept any more
        m_Found = Found::Nothing;
        m_Digests.clear();
    }
    return m_Partial.get();
}

void IncomingFile::write(std::uint64_t chunk, const std::string& data, const Digest& digest)
{
    writeAll(partial(), data, chunk * kChunkSize, m_Name);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Digests.set(chunk, digest);
}

Digest IncomingFile::wholeDigest() const
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (const std::optional<Digest> digest = m_Digests.whole(chunkCount(m_Size)))
        return *digest;
    throw FileFailure(haulbox::FAILED, m_Name + ": a chunk is missing");
}

bool IncomingFile::finish()
{
    wholeDigest(); // throws while a chunk is missing
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (m_Found == Found::Target)
            return true; // the old target is the file already
    }
    partial();
    resize(m_Partial, m_Size, m_Name); // an earlier attempt may have been longer
    flush(m_Partial, m_Name);
    if (!isCurrent(m_Folder, partialName(m_Name), m_Partial))
        throw FileFailure(haulbox::BUSY, m_Name + ": its partial file was removed");
    const bool named = giveName(m_Folder, m_Name, m_Existing);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Partial = FileHandle();
    m_Finished = true;
    return named;
}

void IncomingFile::discard()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_Partial && isCurrent(m_Folder, partialName(m_Name), m_Partial))
        ::unlinkat(m_Folder.get(), partialName(m_Name).c_str(), 0);
    m_Partial = FileHandle();
    m_Finished = true;
}

bool IncomingSmallFiles::keeps(const std::string& below)
{
    std::string name;
    const Folder& folder = m_Folders.parentOf(below, name);
    return m_Existing == Existing::Keep && isFileOrLink(folder, name);
}

std::optional<Digest> IncomingSmallFiles::existingDigest(const std::string& below, std::uint64_t size)
{
    std::string name;
    const Folder& folder = m_Folders.parentOf(below, name);
    struct stat status;
    if (size > kChunkSize || !findFile(folder, name, status) ||
        static_cast<std::uint64_t>(status.st_size) != size)
        return std::nullopt;
    try {
        std::string data;
        const SourceFile file(folder, name);
        if (file.size() != size)
            return std::nullopt;
        file.read(0, data);
        return digestOf(data);
    } catch (const FileFailure&) {
        return std::nullopt; // it can still be replaced
    }
}

void IncomingSmallFiles::add(const std::string& below, const std::string& data)
{
    std::string name;
    const Folder& folder = m_Folders.parentOf(below, name);
    struct stat status;
    findFile(folder, name, status);
    const FileHandle handle = openPartial(folder, name, true);
    resize(handle, data.size(), name);
    writeAll(handle.get(), data, 0, name);
    m_Files.push_back({below, data.size(), digestOf(data)});
}

std::size_t IncomingSmallFiles::finish()
{
    std::size_t kept = 0;
    // Opened again, file by file, so that few are open at once.
    std::string name;
    for (const File& file : m_Files) {
        const Folder& folder = m_Folders.parentOf(file.below, name);
        const FileHandle handle = openPartial(folder, name, false);
        // It was not locked in between, so another transfer may have written to it.
        if (handle && sizeOf(handle, name) == file.size &&
            digestAt(handle.get(), 0, file.size, name) == file.digest) {
            flush(handle, name);
            kept += giveName(folder, name, m_Existing) ? 0 : 1;
        } else if (existingDigest(file.below, file.size) != file.digest) {
            // Another transfer has not given the name to the same data, either.
            throw FileFailure(haulbox::BUSY, file.below + ": another transfer has written it");
        }
    }
    std::set<std::string> flushed;
    for (const File& file : m_Files) {
        const Folder& folder = m_Folders.parentOf(file.below, name);
        const std::string path = file.below.substr(0, file.below.size() - name.size());
        if (m_Names == Names::Flushed && flushed.insert(path).second)
            folder.flush();
    }
    m_Files.clear();
    return kept;
}

} // namespace bulkhaul
