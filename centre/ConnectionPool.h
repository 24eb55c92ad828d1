#ifndef LUMO_CENTRE_CONNECTIONPOOL_H
#define LUMO_CENTRE_CONNECTIONPOOL_H

#include "centre/Query.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace centre {

/// A connection to the database with its prepared operations; used by one thread at a time.
class Connection
{
public:
    explicit Connection(const std::string& dataFolder);

    /// The operation prepared on this connection; kept for the next call.
    Query& query(const Operation& operation, const google::protobuf::MethodDescriptor& method);
    bool knowsToken(const std::string& token);

private:
    std::unique_ptr<SQLite::Database> m_Database;
    SQLite::Statement m_FindToken;
    std::unordered_map<const Operation*, std::unique_ptr<Query>> m_Queries;
};

/// Hands connections to threads and keeps them for the next; as many as threads ask at once.
class ConnectionPool
{
public:
    explicit ConnectionPool(std::string dataFolder) : m_DataFolder(std::move(dataFolder)) {}

    /// A connection that goes back to the pool with the lease, which must not outlive it.
    class Lease
    {
    public:
        explicit Lease(ConnectionPool& pool) : m_Pool(pool), m_Connection(pool.take()) {}
        ~Lease() { m_Pool.giveBack(std::move(m_Connection)); }

        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;

        Connection* operator->() { return m_Connection.get(); }

    private:
        ConnectionPool& m_Pool;
        std::unique_ptr<Connection> m_Connection;
    };

private:
    std::unique_ptr<Connection> take();
    void giveBack(std::unique_ptr<Connection> connection);

    const std::string m_DataFolder;
    std::mutex m_Mutex;
    std::vector<std::unique_ptr<Connection>> m_Free;
};

} // namespace centre

#endif
