#ifndef LUMO_CENTRE_ENDPOINT_SERVELOCK_H
#define LUMO_CENTRE_ENDPOINT_SERVELOCK_H

#include <string>

namespace centre {

/// The right to serve something, held by one process at a time while the object lives. The system gives
/// it back when the process ends, however it ends.
class ServeLock
{
public:
    /// Throws Error(InUse), which names the process, when `what` is served already. `path` is of the file
    /// that is locked.
    ServeLock(const std::string& path, const std::string& what);
    ~ServeLock();

    ServeLock(const ServeLock&) = delete;
    ServeLock& operator=(const ServeLock&) = delete;

private:
    int m_File;
};

} // namespace centre

#endif
