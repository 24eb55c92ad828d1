#ifndef LUMO_CENTRE_CONTENT_REALFOLDER_H
#define LUMO_CENTRE_CONTENT_REALFOLDER_H

#include <cstdint>
#include <string>
#include <vector>

namespace centre {

/// An entry of a folder of this machine.
struct RealEntry
{
    enum class Kind
    {
        File,
        Folder,
        Link,
        Special,   ///< a device, pipe or socket
        Partial,   ///< a partial file of a transfer
        Unreadable ///< its kind or size is not known
    };

    std::string name; ///< any bytes
    Kind kind;
    std::uint64_t size;   ///< of a file, in bytes
    std::string reason{}; ///< of an unreadable entry
};

/// Appends the entries of a folder in the order of their names. Returns an empty text or the reason why it
/// can't be read.
std::string readRealFolder(const std::string& path, std::vector<RealEntry>& entries);

} // namespace centre

#endif
