#include "cli/LogFile.h"

#include "cli/base/ExitCode.h"
#include "cli/output/Output.h"

#include <cerrno>
#include <cstring>

namespace cli {

LogFile::LogFile(const std::string& path) : m_File(std::fopen(path.c_str(), "ae"), &std::fclose)
{
    if (!m_File)
        refuse("can't write the log file '" + path + "': " + std::strerror(errno));
}

void LogFile::write(const std::string& entry)
{
    if (!m_File)
        return;
    if (std::fwrite(entry.data(), 1, entry.size(), m_File.get()) != entry.size() ||
        std::fflush(m_File.get()) != 0) {
        complain(std::string("the log is not whole: ") + std::strerror(errno));
        m_File.reset();
    }
}

} // namespace cli
