#ifndef LUMO_CENTRE_SERVELOCK_H
#define LUMO_CENTRE_SERVELOCK_H

#include <string>

namespace centre {

/// The right to serve a data folder, held by one process at a time while the object lives. The system
/// gives it back when the process ends, however it ends.
class ServeLock
{
public:
    /// Throws Error(InUse), which names the process, when the folder is served already.
    explicit ServeLock(const std::string& dataFolder);
    ~ServeLock();

    ServeLock(const ServeLock&) = delete;
    ServeLock& operator=(const ServeLock&) = delete;

private:
    int m_File;
};

} // namespace centre

#endif
