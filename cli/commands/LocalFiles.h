#ifndef LUMO_CLI_COMMANDS_LOCALFILES_H
#define LUMO_CLI_COMMANDS_LOCALFILES_H

#include <cstdint>
#include <string>

namespace cli {

/// A local file or folder to send.
struct LocalSource
{
    std::string path; ///< without a trailing '/'
    std::string name; ///< its own, also for "." and ".."
    bool folder = false;
    std::uint64_t bytes = 0; ///< of all files in it
};

/// Throws Failure (WrongUse) when there is no such file or folder, or it can't be sent.
LocalSource localSource(const std::string& path);

/// Makes a local folder where there is none, with those above it; throws Failure (WrongUse).
void makeFolder(const std::string& path);

bool isFolder(const std::string& path);
/// Also a link to nowhere, but not one to a folder.
bool isFileOrLink(const std::string& path);
/// The size of a file, or of all files in a folder but those that have arrived in part.
std::uint64_t bytesOf(const std::string& path);
/// `name` in `folder`, as short as it can be written.
std::string below(const std::string& folder, const std::string& name);

} // namespace cli

#endif
