#ifndef LUMO_CLIENT_ENTRY_H
#define LUMO_CLIENT_ENTRY_H

#include "lumo/client/Id.h"

#include <optional>
#include <string>

namespace lumo {

/// A disk, a folder or a file of the storage catalogue. Which fields are used depends on the kind.
struct Entry
{
    /// UTF-8 text of a record, up to its first NUL character; absent when the library's record could not hold
    /// it, because it was too long.
    using Text = std::optional<std::string>;

    enum class Kind
    {
        Disk,
        Folder,
        File
    };

    Kind kind = Kind::Disk;
    DiskId disk;     ///< of a disk its own, of a folder that of its disk
    FolderId folder; ///< of a folder its own
    FolderId parent; ///< of a folder and a file; 0 for the top folder of a disk
    FileId file;     ///< of a file its own
    Text name;       ///< at most 254 bytes in the code page of the session

    // Of a disk.
    unsigned int reference = kNoIdentifier;
    Text box;  ///< the code of its storage box
    Text root; ///< its folder on that box

    // Of a folder or a file; listings leave them absent.
    Text shortText;
    Text longText;
};

} // namespace lumo

#endif
