#ifndef LUMO_CENTRE_BOX_BOXPATH_H
#define LUMO_CENTRE_BOX_BOXPATH_H

#include "centre/store/ConnectionPool.h"

#include <optional>
#include <string>

namespace centre {

/// Whether a text is a path of a box: absolute, UTF-8, no longer than the system takes, without
/// empty components, "." and "..".
bool isBoxPath(const std::string& path);

/// The folder above a path of a box; "/" has none above it and gives itself.
std::string folderAbove(const std::string& path);
std::string lastName(const std::string& path);

/// Whether an absolute path is `root` or lies in it.
bool isAtOrBelow(const std::string& root, const std::string& path);
/// Whether one of two absolute paths is the other or lies in it.
bool overlap(const std::string& one, const std::string& other);

/// What stands after `root` in a path that it leads to, without the separator.
std::string pathBelow(const std::string& root, const std::string& path);

/// What a path of a box lies on: a disk or a version's package.
struct Ground
{
    std::string root;                    ///< the disk's root, or the folder above the package
    std::optional<std::uint32_t> diskId; ///< empty: a package
};

/// The innermost disk of the company, or version, that a path lies on. `boxCode` empty: of any box.
std::optional<Ground> findGround(Connection& connection, std::uint32_t companyId, const std::string& boxCode,
                                 const std::string& path);

} // namespace centre

#endif
