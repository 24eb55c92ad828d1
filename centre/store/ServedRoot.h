#ifndef LUMO_CENTRE_STORE_SERVEDROOT_H
#define LUMO_CENTRE_STORE_SERVEDROOT_H

#include <cstdint>
#include <optional>
#include <string>

namespace centre {

class Connection;

/// A folder of a storage box whose content the box serves.
struct ServedRoot
{
    std::string path;                    ///< the disk's root, or the folder above a version's package
    std::optional<std::uint32_t> diskId; ///< empty: a package
};

/// What a company may do on a disk.
enum class Access
{
    Read, ///< on its own disks and those that others share with it
    Write ///< on its own
};

/// Returns the root of the innermost disk that the company may use, or of the version, that holds the path;
/// nothing if none does. `boxCode` empty: of any box. Throws DatabaseError.
std::optional<ServedRoot> findServedRoot(Connection& connection, std::uint32_t companyId,
                                         const std::string& boxCode, const std::string& path, Access access);

} // namespace centre

#endif
