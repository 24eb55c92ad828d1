#ifndef LUMO_CENTRE_ENDPOINT_SERVELOCK_H
#define LUMO_CENTRE_ENDPOINT_SERVELOCK_H

#include <memory>
#include <string>

namespace centre {

class PostgresDatabase;

/// The right to serve something. One process at a time has it, while the object lives. It is released when
/// the process ends, however it ends.
class ServeLock
{
public:
    /// Locks the file `path`. Throws Error(InUse), which names the process, when another serves `what`.
    ServeLock(const std::string& path, const std::string& what);
    /// Takes a lock of a server's database, of that name. Throws the same.
    ServeLock(std::unique_ptr<PostgresDatabase> database, const std::string& name, const std::string& what);
    ~ServeLock();

    /// Whether the lock is still held. Takes it again after the connection to the server was lost; false if
    /// another process has it by now. Throws DatabaseError while the server can't be reached.
    bool isHeld();

    ServeLock(const ServeLock&) = delete;
    ServeLock& operator=(const ServeLock&) = delete;

private:
    int m_File = -1;
    std::unique_ptr<PostgresDatabase> m_Database;
    std::string m_Name; ///< in the database
};

} // namespace centre

#endif
