#include "centre/store/ConnectionPool.h"

#include "centre/store/Schema.h"

#include <chrono>
#include <filesystem>
#include <limits>

namespace centre {

namespace {

constexpr std::chrono::seconds kLongestWait(10);
constexpr int kTries = 5;

bool mayRunAgain(const DatabaseError& error)
{
    return error.kind() == DatabaseError::Kind::Serialization || error.kind() == DatabaseError::Kind::Lost;
}

} // namespace

ConnectionPool::ConnectionPool(const std::string& place, int connections)
    : m_Place(isServer(place) ? place : std::filesystem::canonical(place).string()),
      m_DataFolder(isServer(place) ? std::string() : m_Place),
      m_Most(isServer(place) ? connections : std::numeric_limits<int>::max())
{
}

void ConnectionPool::change(const std::function<bool(Connection&)>& work)
{
    std::unique_lock<std::mutex> lock(m_Changing, std::defer_lock);
    if (!m_DataFolder.empty())
        lock.lock();
    Lease connection(*this);
    for (int tries = 1;; ++tries)
        try {
            Transaction transaction(connection->database());
            if (work(*connection))
                transaction.commit();
            return;
        } catch (const DatabaseError& error) {
            if (!mayRunAgain(error) || tries == kTries)
                throw;
        }
}

std::unique_ptr<Connection> ConnectionPool::take()
{
    {
        std::unique_lock<std::mutex> lock(m_Mutex);
        ++m_Waiting;
        const bool isFree = m_GivenBack.wait_for(lock, kLongestWait, [this] { return m_Lent < m_Most; });
        --m_Waiting;
        if (!isFree)
            throw DatabaseError(DatabaseError::Kind::Busy,
                                "all " + std::to_string(m_Most) + " connections to the database are in use");
        ++m_Lent;
        if (!m_Free.empty()) {
            std::unique_ptr<Connection> connection = std::move(m_Free.back());
            m_Free.pop_back();
            return connection;
        }
    }
    try {
        return std::make_unique<Connection>(m_Place);
    } catch (...) {
        giveBack(nullptr);
        throw;
    }
}

void ConnectionPool::giveBack(std::unique_ptr<Connection> connection)
{
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        --m_Lent;
        if (connection)
            m_Free.push_back(std::move(connection));
    }
    m_GivenBack.notify_one();
}

ConnectionPool::Usage ConnectionPool::usage() const
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const bool isBounded = m_Most < std::numeric_limits<int>::max();
    return {m_Lent + static_cast<int>(m_Free.size()), m_Lent, m_Waiting, isBounded ? m_Most : 0};
}

} // namespace centre
