#ifndef LUMO_BULKHAUL_FILES_FOLDER_H
#define LUMO_BULKHAUL_FILES_FOLDER_H

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
    /// Leaves the descriptor open, for another owner.
    void release() { m_Descriptor = -1; }
    explicit operator bool() const { return m_Descriptor >= 0; }

private:
    int m_Descriptor = -1;
};

/// Whether bulkhaul moves a file or folder of this name: a single path component of UTF-8, short enough for a
/// file system, that is not the name of a partial file.
bool isMovableName(const std::string& name);

/// Returns the components of a relative path, none for an empty one. Throws FileFailure (UNSAFE_NAME) unless
/// each is a movable name.
std::vector<std::string> splitBelow(const std::string& below);

/// An open folder. Nothing is reached through a symbolic link below it. Functions throw FileFailure.
class Folder
{
public:
    enum class Missing
    {
        Fail,
        Make,
        MakeFlushed ///< and flush its name to the disk
    };

    /// Opens by path and follows links in it. The failure's status is `otherwise` unless errno has a better
    /// one.
    static Folder open(const std::string& path, haulbox::Status otherwise = haulbox::UNREADABLE);

    /// Opens the folder at the end of `components`.
    Folder below(const std::vector<std::string>& components, Missing missing = Missing::Fail) const;
    /// `made` returns whether it was missing.
    Folder below(const std::string& name, Missing missing = Missing::Fail, bool* made = nullptr) const;

    /// Whether the entry exists; `status` describes it. Links are not followed.
    bool find(const std::string& name, struct stat& status) const;

    struct Entry
    {
        std::string name;
        bool folder;
        bool regular;
    };

    /// Returns the folder's entries in the order of their names, without partial files.
    std::vector<Entry> entries() const;

    /// Flushes changes of names in this folder to the disk.
    void flush() const;

    int get() const { return m_Handle.get(); }

private:
    explicit Folder(FileHandle handle) : m_Handle(std::move(handle)) {}

    FileHandle m_Handle;
};

/// Opens the folders of paths below a root. Keeps the last one open, since the next path is mostly in the
/// same folder.
class FolderCache
{
public:
    FolderCache(const Folder& root, Folder::Missing missing) : m_Root(root), m_Missing(missing) {}

    /// Returns the folder of the last component of `below`, which is put into `name`. Valid until the next
    /// call.
    const Folder& parentOf(const std::string& below, std::string& name);

private:
    const Folder& m_Root;
    const Folder::Missing m_Missing;
    std::string m_Path; ///< of m_Last
    std::optional<Folder> m_Last;
};

/// Splits a path into its folder and its last component, which must be a movable name.
std::pair<std::string, std::string> splitPath(const std::string& path);

} // namespace bulkhaul

#endif
