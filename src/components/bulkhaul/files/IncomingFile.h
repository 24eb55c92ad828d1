#ifndef LUMO_BULKHAUL_FILES_INCOMINGFILE_H
#define LUMO_BULKHAUL_FILES_INCOMINGFILE_H

#include "components/bulkhaul/files/Chunks.h"
#include "components/bulkhaul/files/PartialFile.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

namespace bulkhaul {

/// A file that is arriving. Its bytes go to a partial file beside the target; when complete and flushed, the
/// partial file gets the target's name. The next attempt finds a partial file that is left over. One object
/// at a time, of any process, can write to a target. All functions throw FileFailure; foundDigest, keep and
/// write are safe from several threads.
class IncomingFile
{
public:
    /// What exists already and may be kept where its digests are right.
    enum class Found
    {
        Nothing,
        Partial, ///< of an earlier attempt: chunk by chunk
        Target   ///< the old target: as a whole
    };

    /// `waiting` is for another transfer that writes to the target.
    IncomingFile(Folder folder, const std::string& name, std::uint64_t size, Existing existing,
                 Waiting waiting = Waiting());

    /// Returns what existed before the first write.
    Found found() const { return m_FirstFound; }
    std::uint64_t foundSize() const { return m_FoundSize; }
    /// Returns the digest of a chunk of what was found. The chunk must begin below foundSize.
    Digest foundDigest(std::uint64_t chunk);
    /// Keeps chunk `chunk` of what was found, whose digest is `digest`.
    void keep(std::uint64_t chunk, const Digest& digest);

    /// Writes a chunk whose digest is `digest`.
    void write(std::uint64_t chunk, Pieces data, const Digest& digest);

    /// Returns the whole file's digest. Throws FAILED while a chunk is missing.
    Digest wholeDigest() const;
    /// Gives the partial file the target's name. False where an existing target was kept instead, and the
    /// partial file removed. All chunks must have been written or kept. The object can't be used afterwards.
    bool finish();
    /// Removes the partial file. The object can't be used afterwards.
    void discard();

    const Folder& folder() const { return m_Folder; }

private:
    int foundFile();
    const PartialFile& partial();

    Folder m_Folder;
    const std::string m_Name;
    const std::uint64_t m_Size;
    const Existing m_Existing;
    const Waiting m_Waiting;
    Found m_FirstFound = Found::Nothing;
    std::uint64_t m_FoundSize = 0;
    FileHandle m_OldTarget;
    mutable std::mutex m_Mutex; ///< guards what follows
    Found m_Found = Found::Nothing;
    PartialFile m_Partial;
    ChunkDigests m_Digests; ///< of the chunks that were written or kept
    bool m_Finished = false;
};

} // namespace bulkhaul

#endif
