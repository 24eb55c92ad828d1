#ifndef LUMO_CENTRE_CONTENT_VERSION_H
#define LUMO_CENTRE_CONTENT_VERSION_H

#include <cstdint>
#include <string>

namespace centre {

class Store;

enum class VersionKind
{
    Program = 1,
    Module = 2
};

/// A version of a program or a module to add.
struct Version
{
    VersionKind kind = VersionKind::Program;
    std::string number;   ///< of the program or module
    std::string version;  ///< version number
    std::string path;     ///< its package, a real file or folder
    std::string boxCode;  ///< the storage box that holds it
    std::string name;     ///< empty: the number
    std::string released; ///< YYYY-MM-DD; empty: today
    std::string notes;
};

/// Adds a version. Throws Error for a package or box that does not exist, names and dates that are not valid,
/// and a version number that exists already or equals one that does.
void addVersion(Store& store, const Version& version);

/// Returns bytes that compare as version numbers do: runs of digits as numbers; letters before a further
/// part; a number with a hyphen before the same without it.
std::string versionPlace(const std::string& version);

} // namespace centre

#endif
