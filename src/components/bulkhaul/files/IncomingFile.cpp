#include "components/bulkhaul/files/IncomingFile.h"

#include "components/bulkhaul/files/FileFailure.h"

#include <fcntl.h>

#include <algorithm>

namespace bulkhaul {

IncomingFile::IncomingFile(Folder folder, const std::string& name, std::uint64_t size, Existing existing,
                           Waiting waiting)
    : m_Folder(std::move(folder)), m_Name(name), m_Size(size), m_Existing(existing), m_Waiting(waiting)
{
    if (size > kLargestFile)
        throw FileFailure(haulbox::NO_SPACE, name + ": too large, " + std::to_string(size) + " bytes");
    struct stat target;
    findFile(m_Folder, name, target); // throws for what a file can't replace
    m_Partial = PartialFile(m_Folder, name, PartialFile::Missing::None, waiting);
    const bool exists = findFile(m_Folder, name, target); // another transfer may have made it
    const std::uint64_t partialSize = m_Partial ? m_Partial.size() : 0;
    if (partialSize > 0) {
        m_FirstFound = m_Found = Found::Partial;
        m_FoundSize = std::min(size, partialSize);
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

const PartialFile& IncomingFile::partial()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_Finished)
        throw FileFailure(haulbox::BUSY, m_Name + ": the upload has ended");
    if (!m_Partial)
        m_Partial = PartialFile(m_Folder, m_Name, PartialFile::Missing::Make, m_Waiting);
    if (m_Found == Found::Target) { // its chunks can't be kept any more
        m_Found = Found::Nothing;
        m_Digests.clear();
    }
    return m_Partial;
}

void IncomingFile::write(std::uint64_t chunk, Pieces data, const Digest& digest)
{
    partial().write(std::move(data), chunk * kChunkSize);
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
    partial().resize(m_Size); // an earlier attempt may have been longer
    m_Partial.flush();
    const bool named = m_Partial.giveName(m_Folder, m_Existing);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Partial = PartialFile();
    m_Finished = true;
    return named;
}

void IncomingFile::discard()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_Partial)
        m_Partial.remove(m_Folder);
    m_Partial = PartialFile();
    m_Finished = true;
}

} // namespace bulkhaul
