#ifndef LUMO_CENTRE_STORE_CONNECTIONPOOL_H
#define LUMO_CENTRE_STORE_CONNECTIONPOOL_H

#include "centre/store/Query.h"
#include "centre/store/StorageTree.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace centre {

/// The reason for refusing a token that no user has.
constexpr char kUnknownToken[] = "the token is not that of a user of this centre";

struct User
{
    std::string name;
    std::uint32_t companyId;
    bool mayWrite;
};

/// A connection to the database, with the statements that are prepared on it. For one thread at a time. Its
/// functions throw SQLite::Exception.
class Connection
{
public:
    explicit Connection(const std::string& dataFolder);

    /// Returns the operation prepared on this connection, which keeps it for the next call.
    Query& query(const Operation& operation, const google::protobuf::MethodDescriptor& method);
    /// Returns the statement prepared on this connection, which keeps it for the next call by the address of
    /// `sql`.
    SQLite::Statement& statement(const char* sql);
    StorageTree& storageTree();
    SQLite::Database& database() { return *m_Database; }

    /// Returns the user of a token. Looks it up anew each time, so that a user who was just added can log in.
    std::optional<User> user(const std::string& token);
    /// The same; throws std::runtime_error for an unknown token.
    User requireUser(const std::string& token);

private:
    std::unique_ptr<SQLite::Database> m_Database;
    std::optional<StorageTree> m_Tree;
    std::unordered_map<const char*, SQLite::Statement> m_Statements;
    std::unordered_map<const Operation*, std::unique_ptr<Query>> m_Queries;
};

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

private:
    std::unique_ptr<Connection> take();
    void giveBack(std::unique_ptr<Connection> connection);

    const std::string m_DataFolder;
    std::mutex m_Mutex;
    std::mutex m_Changing;
    std::vector<std::unique_ptr<Connection>> m_Free;
};

} // namespace centre

#endif
