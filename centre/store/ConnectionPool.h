#ifndef LUMO_CENTRE_STORE_CONNECTIONPOOL_H
#define LUMO_CENTRE_STORE_CONNECTIONPOOL_H

#include "centre/store/Connection.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace centre {

/// Lends connections to threads and keeps them for the next.
class ConnectionPool
{
public:
    static constexpr int kConnections = 16; ///< to a server, unless another number is given

    /// `place` is a data folder, which must exist, or a server; see Schema.h. A server gets at most
    /// `connections` at once, a data folder as many as threads use.
    explicit ConnectionPool(const std::string& place, int connections = kConnections);

    /// Absolute, without symbolic links; empty for a server.
    const std::string& dataFolder() const { return m_DataFolder; }

    /// A connection that goes back to the pool when the lease ends. The pool must outlive the lease. Throws
    /// DatabaseError(Busy) when all connections are in use for ten seconds.
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

    /// Runs work in a transaction and commits it unless the work returns false. Runs the work again, from the
    /// start, when the transaction met another one or its connection was lost, at most five times.
    void change(const std::function<bool(Connection&)>& work);

    /// How much of the pool is needed now.
    struct Usage
    {
        int open;    ///< connections
        int inUse;   ///< those of them that are lent
        int waiting; ///< threads that wait for one
        int most;    ///< connections that may be open; 0: any number
    };
    Usage usage() const;

private:
    std::unique_ptr<Connection> take();
    void giveBack(std::unique_ptr<Connection> connection);

    const std::string m_Place;
    const std::string m_DataFolder;
    const int m_Most;
    mutable std::mutex m_Mutex;
    std::condition_variable m_GivenBack;
    int m_Lent = 0;
    int m_Waiting = 0;
    std::vector<std::unique_ptr<Connection>> m_Free;
    std::mutex m_Changing; ///< of a data folder: threads that wait for it continue at once, those that wait
                           ///< in SQLite sleep
};

} // namespace centre

#endif
