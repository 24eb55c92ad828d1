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

/// What to do with an existing file or link of the target's name. A link is not followed.
enum class Existing
{
    Replace,
    Keep ///< also one that was created while the transfer ran
};

/// Whether a file or a link has that name.
bool isFileOrLink(const Folder& folder, const std::string& name);

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

    IncomingFile(Folder folder, const std::string& name, std::uint64_t size, Existing existing);

    /// Returns what existed before the first write.
    Found found() const { return m_FirstFound; }
    std::uint64_t foundSize() const { return m_FoundSize; }
    /// Returns the digest of a chunk of what was found. The chunk must begin below foundSize.
    Digest foundDigest(std::uint64_t chunk);
    /// Keeps chunk `chunk` of what was found, whose digest is `digest`.
    void keep(std::uint64_t chunk, const Digest& digest);

    /// Writes a chunk whose digest is `digest`.
    void write(std::uint64_t chunk, const std::string& data, const Digest& digest);

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
    ChunkDigests m_Digests; ///< of the chunks that were written or kept
    bool m_Finished = false;
};

/// Arriving files of at most one chunk each. They are flushed together, which is much cheaper than one by
/// one.
class IncomingSmallFiles
{
public:
    /// Whether `finish` flushes the names of files and new folders to the disk, too. Without that, a machine
    /// that crashes may have the old target afterwards.
    enum class Names
    {
        Given,
        Flushed
    };

    /// Takes files below `root`, where it makes missing folders.
    IncomingSmallFiles(const Folder& root, Names names, Existing existing)
        : m_Folders(root, names == Names::Flushed ? Folder::Missing::MakeFlushed : Folder::Missing::Make),
          m_Names(names),
          m_Existing(existing)
    {
    }

    /// Whether an existing file or link keeps the name.
    bool keeps(const std::string& below);
    /// Returns the digest of the existing file; none unless a file of `size` bytes exists.
    std::optional<Digest> existingDigest(const std::string& below, std::uint64_t size);
    /// Writes the partial file.
    void add(const std::string& below, const std::string& data);
    /// Flushes all files, then gives all their names. Returns how many existing ones were kept instead.
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
