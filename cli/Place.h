#ifndef LUMO_CLI_PLACE_H
#define LUMO_CLI_PLACE_H

#include <string>
#include <vector>

namespace cli {

/// Where in the catalogue: a path such as "/disk/folder/file", or an identifier with its kind such as
/// "folder:12".
struct Place
{
    enum class Kind
    {
        Path,
        Disk,
        Folder,
        File
    };

    Kind kind = Kind::Path;
    std::vector<std::string> components; ///< of a path, UTF-8; none for "/", all disks
    bool folderOnly = false;             ///< the path ends with '/', so it can't be a file
    unsigned int id = 0;                 ///< of the other kinds
};

/// Reads what the user typed; throws Failure (WrongUse) that says what would be right.
Place parsePlace(const std::string& text);

/// The identifier with its kind, as parsePlace reads it.
std::string identifierText(const char* kind, unsigned int id);

} // namespace cli

#endif
