#ifndef LUMO_BULKHAUL_FILES_PARTIALFILE_H
#define LUMO_BULKHAUL_FILES_PARTIALFILE_H

#include "components/bulkhaul/files/Chunks.h"
#include "components/bulkhaul/files/Folder.h"

#include <sys/stat.h>
#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

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

/// Whether a file of that name exists; `status` describes it. Throws FileFailure (WRONG_KIND) for an entry
/// that a file can't replace.
bool findFile(const Folder& folder, const std::string& name, struct stat& status);

/// Returns the digest of up to `length` bytes of an open file; of fewer where the file ends. `name` is for
/// the reason of a FileFailure.
Digest digestAt(int file, std::uint64_t offset, std::size_t length, const std::string& name);

/// How long to wait for another transfer that writes to the same target.
struct Waiting
{
    std::chrono::milliseconds most = std::chrono::seconds(3);
    bool renewed = false; ///< begins again whenever the other one has written
};

/// The partial file beside a target, open and locked against every other process. Functions throw
/// FileFailure.
class PartialFile
{
public:
    enum class Missing
    {
        None, ///< the object is empty
        Make
    };

    PartialFile() = default;
    /// Throws BUSY when another owner of the lock does not end.
    PartialFile(const Folder& folder, const std::string& target, Missing missing,
                Waiting waiting = Waiting());

    explicit operator bool() const { return static_cast<bool>(m_File); }
    int get() const { return m_File.get(); }
    /// Returns the size that it had when it was opened.
    std::uint64_t size() const { return m_Size; }
    dev_t device() const { return m_Device; }
    void resize(std::uint64_t size) const;
    void write(Pieces pieces, std::uint64_t offset) const;
    /// Flushes the data to the disk.
    void flush() const;
    /// Gives the file, which must have been flushed, the target's name. Returns false where an existing file
    /// or link was kept instead, and this one removed. Throws BUSY if it was removed by someone else. It is
    /// unlocked when the object is destroyed.
    bool giveName(const Folder& folder, Existing existing) const;
    /// Removes the file.
    void remove(const Folder& folder) const;

private:
    bool isCurrent(const Folder& folder) const;
    void lock(Waiting waiting) const;

    std::string m_Target; ///< the target's name
    FileHandle m_File;
    ino_t m_Inode = 0;
    dev_t m_Device = 0;
    std::uint64_t m_Size = 0;
};

} // namespace bulkhaul

#endif
