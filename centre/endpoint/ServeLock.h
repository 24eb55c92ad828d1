#ifndef LUMO_CENTRE_ENDPOINT_SERVELOCK_H
#define LUMO_CENTRE_ENDPOINT_SERVELOCK_H

#include <string>

namespace centre {

/// The right to serve something. One process at a time has it, while the object lives. The system releases it
/// when the process ends, however it ends.
class ServeLock
{
public:
    /// Locks the file `path`. Throws Error(InUse), which names the process, when another serves `what`.
    ServeLock(const std::string& path, const std::string& what);
    ~ServeLock();

    ServeLock(const ServeLock&) = delete;
    ServeLock& operator=(const ServeLock&) = delete;

private:
    int m_File;
};

} // namespace centre

#endif
