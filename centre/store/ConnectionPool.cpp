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
