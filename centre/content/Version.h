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

/// Throws Error: a package that is not there, names and dates that can't be, a version number that is taken
/// or equal to one that is, no such box.
void addVersion(Store& store, const Version& version);

/// Bytes that compare as version numbers do: runs of digits as numbers; letters before a further part;
/// what follows a hyphen before the number without it.
std::string versionPlace(const std::string& version);

} // namespace centre

#endif
