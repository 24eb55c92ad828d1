#include "centre/store/ConnectionPool.h"

#include <filesystem>

namespace centre {

ConnectionPool::ConnectionPool(const std::string& dataFolder)
    : m_DataFolder(std::filesystem::canonical(dataFolder).string())
{
}

std::unique_ptr<Connection> ConnectionPool::take()
{
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        ++m_Lent;
        if (!m_Free.empty()) {
            std::unique_ptr<Connection> connection = std::move(m_Free.back());
            m_Free.pop_back();
            return connection;
        }
    }
    try {
        return std::make_unique<Connection>(m_DataFolder);
    } catch (...) {
        giveBack(nullptr);
        throw;
    }
}

void ConnectionPool::giveBack(std::unique_ptr<Connection> connection)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    --m_Lent;
    if (connection)
        m_Free.push_back(std::move(connection));
}

ConnectionPool::Usage ConnectionPool::usage() const
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return {m_Lent, 0}; // nobody waits: there are as many as threads use
}

} // namespace centre
