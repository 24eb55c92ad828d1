#ifndef LUMO_CLIENT_CATALOGUE_H
#define LUMO_CLIENT_CATALOGUE_H

#include "lumo/client/Entry.h"
#include "lumo/client/Place.h"
#include "lumo/components/platform/Export.h"

#include <memory>
#include <string>
#include <vector>

namespace lumo {

namespace internal {
class Link;
}

/// The storage catalogue: disks, folders and files. A light handle that may be copied and used from any
/// thread; each member asks the centre and returns when it has answered. After the session has closed every
/// member throws Error (Closed). All throw Error (NoAnswer, Refused) when a request fails.
class LUMO_EXPORT Catalogue
{
public:
    explicit Catalogue(std::shared_ptr<internal::Link> link);

    /// Throws Error (NotFound); Error (WrongUse) for "/".
    Entry find(const Place& place) const;

    /// As much of a path as there is.
    struct Part
    {
        Entry found;
        std::string missing; ///< names of folders below, with "/" between them; empty: all was found
    };
    /// The same, but the end of a path may be missing; its disk may not.
    Part findPart(Place place) const;

    /// The disks of the company, by name.
    std::vector<Entry> disks() const;
    /// What is directly in a folder, by name; an entry without a name comes last.
    std::vector<Entry> folders(FolderId folder) const;
    std::vector<Entry> files(FolderId folder) const;
    /// Those of a project that are linked to a comment, by name.
    std::vector<Entry> folders(ProjectId project, CommentId comment) const;
    std::vector<Entry> files(ProjectId project, CommentId comment) const;

    /// The folder that an entry is: of a disk its top folder. Throws Error (NotFound); Error (WrongUse) for a
    /// file.
    FolderId folderOf(const Entry& entry) const;
    /// The disk on which it is; throws Error (NotFound).
    Entry diskOf(const Entry& entry) const;
    /// Its path, such as "/disk/folder"; absent when a name on it is not known.
    Entry::Text pathOf(const Entry& entry) const;

    /// Makes a folder below a disk or a folder, and those on the way to it: `path` has "/" between names.
    FolderId makeFolder(const Entry& parent, const std::string& path) const;

private:
    std::shared_ptr<internal::Link> m_Link;
};

} // namespace lumo

#endif
