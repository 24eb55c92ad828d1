#include "centre/ConnectionPool.h"

#include "centre/ResetAtEnd.h"
#include "centre/Schema.h"
#include "centre/Token.h"

namespace centre {

Connection::Connection(const std::string& dataFolder)
    : m_Database(openDatabase(dataFolder)),
      m_FindToken(*m_Database, "SELECT 1 FROM user WHERE token_hash = ?")
{
}

Query& Connection::query(const Operation& operation, const google::protobuf::MethodDescriptor& method)
{
    std::unique_ptr<Query>& query = m_Queries[&operation];
    if (!query)
        query = std::make_unique<Query>(*m_Database, operation, method);
    return *query;
}

bool Connection::knowsToken(const std::string& token)
{
    // Looked up anew for each call, so that a user who was just added can log in.
    const std::string hash = tokenHash(token);
    const ResetAtEnd resetAtEnd(m_FindToken);
    m_FindToken.bind(1, hash.data(), static_cast<int>(hash.size()));
    return m_FindToken.executeStep();
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
