#include "centre/endpoint/ServeLock.h"

#include "centre/base/Error.h"
#include "centre/database/PostgresDatabase.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace centre {

namespace {

std::string holder(int file)
{
    char text[32] = "";
    const ssize_t length = ::pread(file, text, sizeof text - 1, 0);
    return length > 0 ? "process " + std::string(text, length) : "another process";
}

} // namespace

ServeLock::ServeLock(const std::string& path, const std::string& what)
{
    m_File = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (m_File < 0)
        throw Error(ExitCode::Failed, "can't open " + path + ": " + std::strerror(errno));
    if (::flock(m_File, LOCK_EX | LOCK_NB) != 0) {
        const int reason = errno;
        const std::string message = reason == EWOULDBLOCK
                                        ? what + " is being served by " + holder(m_File) + "; stop that first"
                                        : "can't lock " + path + ": " + std::strerror(reason);
        ::close(m_File);
        throw Error(reason == EWOULDBLOCK ? ExitCode::InUse : ExitCode::Failed, message);
    }
    // The number is only for the message above, so a failure to write it does no harm.
    const std::string process = std::to_string(::getpid());
    if (::ftruncate(m_File, 0) != 0 || ::pwrite(m_File, process.data(), process.size(), 0) < 0)
        return;
}

ServeLock::ServeLock(std::unique_ptr<PostgresDatabase> database, const std::string& name,
                     const std::string& what)
    : m_Database(std::move(database)), m_Name(name)
{
    if (!m_Database->tryLock(name))
        throw Error(ExitCode::InUse, what + " is being served by another process; stop that first");
}

bool ServeLock::isHeld()
{
    return !m_Database || m_Database->tryLock(m_Name); // a connection may take its lock any number of times
}

ServeLock::~ServeLock()
{
    if (m_File >= 0)
        ::close(m_File);
}

} // namespace centre
