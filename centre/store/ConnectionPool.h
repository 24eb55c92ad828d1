#ifndef LUMO_CENTRE_STORE_CONNECTIONPOOL_H
#define LUMO_CENTRE_STORE_CONNECTIONPOOL_H

#include "centre/store/Connection.h"

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace centre {

/// Lends connections to threads and keeps them for the next; as many as threads use at once.
class ConnectionPool
{
public:
    /// The data folder must exist.
    explicit ConnectionPool(const std::string& dataFolder);

    /// Absolute, without symbolic links.
    const std::string& dataFolder() const { return m_DataFolder; }

    /// A connection that goes back to the pool when the lease ends. The pool must outlive the lease.
    class Lease
    {
    public:
        explicit Lease(ConnectionPool& pool) : m_Pool(pool), m_Connection(pool.take()) {}
        ~Lease() { m_Pool.giveBack(std::move(m_Connection)); }

        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;

        Connection* operator->() { return m_Connection.get(); }
        Connection& operator*() { return *m_Connection; }

    private:
        ConnectionPool& m_Pool;
        std::unique_ptr<Connection> m_Connection;
    };

    /// To hold around each transaction that writes: threads that wait for it continue at once, those that
    /// wait in SQLite sleep.
    std::mutex& changing() { return m_Changing; }

    /// How much of the pool is needed now.
    struct Usage
    {
        int inUse;   ///< connections that are lent
        int waiting; ///< threads that wait for one
    };
    Usage usage() const;

private:
    std::unique_ptr<Connection> take();
    void giveBack(std::unique_ptr<Connection> connection);

    const std::string m_DataFolder;
    mutable std::mutex m_Mutex;
    std::mutex m_Changing;
    std::vector<std::unique_ptr<Connection>> m_Free;
    int m_Lent = 0;
};

} // namespace centre

#endif
