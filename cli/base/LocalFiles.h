#ifndef LUMO_CLI_BASE_LOCALFILES_H
#define LUMO_CLI_BASE_LOCALFILES_H

#include <cstdint>
#include <fstream>
#include <string>

namespace cli {

/// A local file or folder to send.
struct LocalSource
{
    std::string path; ///< without a trailing '/'
    std::string name; ///< the real one, also of "." and ".."
    bool folder = false;
    std::uint64_t bytes = 0; ///< of all files in it
};

/// Throws Failure (WrongUse) when there is no such file or folder, or it can't be sent.
LocalSource localSource(const std::string& path);

/// A folder for files that live as long as the object. Throws Failure (WrongUse) when none can be made.
class TemporaryFolder
{
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const std::string& path() const { return m_Path; }

private:
    std::string m_Path;
};

/// Opens a file to read; `name` names it in the message of the Failure (WrongUse) when it can't be read.
std::ifstream openedFile(const std::string& path, const std::string& name);

/// Makes a local folder where there is none, with those above it; throws Failure (WrongUse).
void makeFolder(const std::string& path);

/// Whether a name is that of the partial file of an unfinished transfer, ".NAME.lumo-part".
bool isPartialName(const std::string& name);

bool isFolder(const std::string& path);
/// True also for a link whose target does not exist, but not for a link to a folder.
bool isFileOrLink(const std::string& path);
/// The size of a file, or of all files in a folder except partial ones of unfinished transfers.
std::uint64_t bytesOf(const std::string& path);
/// The path of `name` in `folder`, in its shortest form.
std::string below(const std::string& folder, const std::string& name);

} // namespace cli

#endif
