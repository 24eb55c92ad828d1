#ifndef LUMO_BULKHAUL_FOLDER_H
#define LUMO_BULKHAUL_FOLDER_H

#include "haulbox.pb.h"

#include <sys/stat.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace bulkhaul {

/// A file descriptor that closes with its owner.
class FileHandle
{
public:
    FileHandle() = default;
    explicit FileHandle(int descriptor) : m_Descriptor(descriptor) {}
    FileHandle(FileHandle&& other) noexcept : m_Descriptor(std::exchange(other.m_Descriptor, -1)) {}
    FileHandle& operator=(FileHandle&& other) noexcept
    {
        std::swap(m_Descriptor, other.m_Descriptor);
        return *this;
    }
    ~FileHandle();

    int get() const { return m_Descriptor; }
    /// Somebody else closes it.
    void release() { m_Descriptor = -1; }
    explicit operator bool() const { return m_Descriptor >= 0; }

private:
    int m_Descriptor = -1;
};

/// Whether bulkhaul moves a file or folder of this name: a single path component of UTF-8, short enough for a
/// file system, that is not the name of a partial file.
bool isMovableName(const std::string& name);

/// The components of a relative path; throws FileFailure (UNSAFE_NAME) unless each is a movable name. Of an
/// empty path there are none.
std::vector<std::string> splitBelow(const std::string& below);

/// An open folder. Nothing is reached through a symbolic link below it. Functions throw FileFailure.
class Folder
{
public:
    enum class Missing
    {
        Fail,
        Make,
        MakeFlushed ///< and put its name on the disk
    };

    /// Opens by path, following links in it. `otherwise` is the failure that errno has no better one for.
    static Folder open(const std::string& path, haulbox::Status otherwise = haulbox::UNREADABLE);

    /// The folder that `components` lead to.
    Folder below(const std::vector<std::string>& components, Missing missing = Missing::Fail) const;
    Folder below(const std::string& name, Missing missing = Missing::Fail) const;

    /// Whether there is such an entry, and what it is; links are not followed.
    bool find(const std::string& name, struct stat& status) const;

    struct Entry
    {
        std::string name;
        bool folder;
        bool regular;
    };

    /// What stands in the folder, in the order of names, without partial files.
    std::vector<Entry> entries() const;

    /// Puts what was done to names in this folder on the disk.
    void flush() const;

    int get() const { return m_Handle.get(); }

private:
    explicit Folder(FileHandle handle) : m_Handle(std::move(handle)) {}

    FileHandle m_Handle;
};

/// Opens the folders of paths below a root; keeps the last one open, since neighbours come one behind the
/// other.
class FolderCache
{
public:
    FolderCache(const Folder& root, Folder::Missing missing) : m_Root(root), m_Missing(missing) {}

    /// The folder that holds the last component of `below`, which is put into `name`; until the next call.
    const Folder& parentOf(const std::string& below, std::string& name);

private:
    const Folder& m_Root;
    const Folder::Missing m_Missing;
    std::vector<std::string> m_Path;
    std::optional<Folder> m_Last;
};

/// A path as the folder that holds it and its last component, which must be a movable name.
std::pair<std::string, std::string> splitPath(const std::string& path);

} // namespace bulkhaul

#endif
