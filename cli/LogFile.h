#ifndef LUMO_CLI_LOGFILE_H
#define LUMO_CLI_LOGFILE_H

#include <cstdio>
#include <memory>
#include <string>

namespace cli {

/// The file that --log names, which the library's log is appended to.
class LogFile
{
public:
    /// Throws Failure (WrongUse) when the file can't be opened.
    explicit LogFile(const std::string& path);

    /// Appends an entry at once. Complains when that fails for the first time, and writes nothing after that.
    void write(const std::string& entry);

private:
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_File;
};

} // namespace cli

#endif
