#ifndef LUMO_CLIENT_PLACE_H
#define LUMO_CLIENT_PLACE_H

#include "lumo/client/Id.h"
#include "lumo/components/platform/Export.h"

#include <string>
#include <vector>

namespace lumo {

/// Where something is in the storage catalogue: a path such as "/disk/folder/file", or a kind and an
/// identifier such as "folder:12". A value; making one asks nobody whether it exists.
class LUMO_EXPORT Place
{
public:
    enum class Kind
    {
        Path,
        Disk,
        Folder,
        File
    };

    /// Reads a text of either form, in UTF-8; throws Error (WrongUse) that says what would be right.
    Place(const std::string& text);
    Place(const char* text) : Place(std::string(text)) {}
    Place(DiskId id) : m_Kind(Kind::Disk), m_Number(id.number()) {}
    Place(FolderId id) : m_Kind(Kind::Folder), m_Number(id.number()) {}
    Place(FileId id) : m_Kind(Kind::File), m_Number(id.number()) {}

    Kind kind() const { return m_Kind; }
    /// Whether it is "/", which means all disks.
    bool isRoot() const { return m_Kind == Kind::Path && m_Names.empty(); }
    /// The names of a path, the disk's first.
    const std::vector<std::string>& names() const { return m_Names; }
    /// Whether it must be a disk or a folder; a path that ends with "/" must.
    bool mustBeFolder() const { return m_MustBeFolder; }
    void requireFolder() { m_MustBeFolder = true; }
    /// The place one name up; only for a path that has a name.
    Place parent() const;
    /// The identifier; not for a path.
    unsigned int number() const { return m_Number; }

private:
    Kind m_Kind = Kind::Path;
    std::vector<std::string> m_Names;
    bool m_MustBeFolder = false;
    unsigned int m_Number = kNoIdentifier;
};

} // namespace lumo

#endif
