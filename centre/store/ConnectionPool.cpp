#include "centre/store/ConnectionPool.h"

#include "centre/base/Token.h"
#include "centre/store/ResetAtEnd.h"
#include "centre/store/Schema.h"

#include <filesystem>
#include <stdexcept>

namespace centre {

namespace {

constexpr char kUserOfToken[] = "SELECT username, company_id, may_write FROM user WHERE token_hash = ?";

} // namespace

Connection::Connection(const std::string& dataFolder) : m_Database(openDatabase(dataFolder))
{
}

Query& Connection::query(const Operation& operation, const google::protobuf::MethodDescriptor& method)
{
    std::unique_ptr<Query>& query = m_Queries[&operation];
    if (!query)
        query = std::make_unique<Query>(*m_Database, operation, method);
    return *query;
}

SQLite::Statement& Connection::statement(const char* sql)
{
    const auto known = m_Statements.find(sql);
    return known != m_Statements.end()
               ? known->second
               : m_Statements.emplace(sql, SQLite::Statement(*m_Database, sql)).first->second;
}

StorageTree& Connection::storageTree()
{
    return m_Tree ? *m_Tree : m_Tree.emplace(*m_Database);
}

std::optional<User> Connection::user(const std::string& token)
{
    const std::string hash = tokenHash(token);
    SQLite::Statement& row = statement(kUserOfToken);
    const ResetAtEnd resetAtEnd(row);
    row.bind(1, hash.data(), static_cast<int>(hash.size()));
    if (!row.executeStep())
        return std::nullopt;
    return User{row.getColumn(0).getString(), row.getColumn(1).getUInt(), row.getColumn(2).getInt() != 0};
}

User Connection::requireUser(const std::string& token)
{
    if (std::optional<User> known = user(token))
        return *known;
    throw std::runtime_error(kUnknownToken);
}

ConnectionPool::ConnectionPool(const std::string& dataFolder)
    : m_DataFolder(std::filesystem::canonical(dataFolder).string())
{
}

std::unique_ptr<Connection> ConnectionPool::take()
{
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (!m_Free.empty()) {
            std::unique_ptr<Connection> connection = std::move(m_Free.back());
            m_Free.pop_back();
            return connection;
        }
    }
    return std::make_unique<Connection>(m_DataFolder);
}

void ConnectionPool::giveBack(std::unique_ptr<Connection> connection)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Free.push_back(std::move(connection));
}

} // namespace centre
