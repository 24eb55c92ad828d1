#ifndef LUMO_BULKHAUL_INCOMINGFILE_H
#define LUMO_BULKHAUL_INCOMINGFILE_H

#include "components/bulkhaul/Chunks.h"
#include "components/bulkhaul/Folder.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace bulkhaul {

/// Whether a name is that of a partial file, ".NAME.lumo-part".
bool isPartialName(const std::string& name);

/// What becomes of a file, or of a link, which is not followed, that has the target's name already.
enum class Existing
{
    Replace,
    Keep ///< also one that came while the transfer ran
};

/// Whether a file or a link has that name.
bool isFileOrLink(const Folder& folder, const std::string& name);

/// A file on its way in. Its bytes go to a partial file beside the target, which takes the target's name
/// when it is whole and flushed. A partial file that is left over is found by the next attempt. One object
/// at a time, of any process, can write to a target. All functions throw FileFailure; foundDigest, keep and
/// write are safe from several threads.
class IncomingFile
{
public:
    /// What stands here already and may be kept where its digests are right.
    enum class Found
    {
        Nothing,
        Partial, ///< of an earlier attempt: chunk by chunk
        Target   ///< the old target: as a whole
    };

    IncomingFile(Folder folder, const std::string& name, std::uint64_t size, Existing existing);

    /// As it was when nothing had been written yet.
    Found found() const { return m_FirstFound; }
    std::uint64_t foundSize() const { return m_FoundSize; }
    /// The digest of a chunk of what was found, below foundSize.
    Digest foundDigest(std::uint64_t chunk);
    /// Chunk `chunk` need not come: what was found has `digest` there.
    void keep(std::uint64_t chunk, const Digest& digest);

    /// Writes a chunk whose digest is `digest`.
    void write(std::uint64_t chunk, const std::string& data, const Digest& digest);

    /// The whole file's digest; FAILED while a chunk is missing.
    Digest wholeDigest() const;
    /// Gives the target its name; false where an existing one was kept instead, and the partial file removed.
    /// All chunks must be there. Nothing can be done with the object afterwards.
    bool finish();
    /// Removes the partial file instead. Nothing can be done with the object afterwards.
    void discard();

    const Folder& folder() const { return m_Folder; }

private:
    int foundFile();
    int partial();

    Folder m_Folder;
    const std::string m_Name;
    const std::uint64_t m_Size;
    const Existing m_Existing;
    Found m_FirstFound = Found::Nothing;
    std::uint64_t m_FoundSize = 0;
    FileHandle m_OldTarget;
    mutable std::mutex m_Mutex; ///< guards what follows
    Found m_Found = Found::Nothing;
    FileHandle m_Partial;
    ChunkDigests m_Digests; ///< of the chunks that are there
    bool m_Finished = false;
};

/// Files of at most one chunk on their way in, flushed together: much cheaper than one by one.
class IncomingSmallFiles
{
public:
    /// Whether names that were given, and new folders, have reached the disk, too. Before that, a machine
    /// that stops may show the old target.
    enum class Names
    {
        Given,
        Flushed
    };

    /// Below `root`, where missing folders are made.
    IncomingSmallFiles(const Folder& root, Names names, Existing existing)
        : m_Folders(root, names == Names::Flushed ? Folder::Missing::MakeFlushed : Folder::Missing::Make),
          m_Names(names),
          m_Existing(existing)
    {
    }

    /// Whether the name is left to what has it already.
    bool keeps(const std::string& below);
    /// The digest of the file that is there; none unless it is one of `size` bytes.
    std::optional<Digest> existingDigest(const std::string& below, std::uint64_t size);
    /// Writes the partial file.
    void add(const std::string& below, const std::string& data);
    /// Flushes all, then gives all their names; how many existing ones were kept instead.
    std::size_t finish();

private:
    struct File
    {
        std::string below;
        std::uint64_t size;
        Digest digest;
    };

    FolderCache m_Folders;
    const Names m_Names;
    const Existing m_Existing;
    std::vector<File> m_Files;
};

} // namespace bulkhaul

#endif
