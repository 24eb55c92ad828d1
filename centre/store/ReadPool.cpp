#include "centre/store/ReadPool.h"

#include "centre/base/Error.h"
#include "centre/store/Schema.h"

#include <chrono>
#include <iostream>

namespace centre {

namespace {

constexpr std::chrono::seconds kPause(5); // between trials of a replica that does not answer

std::int64_t nanoseconds(std::chrono::nanoseconds time)
{
    return time.count();
}

std::int64_t steadyTime()
{
    return nanoseconds(std::chrono::steady_clock::now().time_since_epoch());
}

void requireSameTables(const std::string& replica)
{
    try {
        openDatabase(replica);
    } catch (const Error& error) {
        if (error.code() != ExitCode::Failed)
            throw;
        std::cerr << "lumo-centre: reads go to the catalogue's own database: " + std::string(error.what()) +
                         "\n";
    }
}

} // namespace

ReadPool::ReadPool(ConnectionPool& catalogue, const std::string& replica, int connections)
    : m_Catalogue(catalogue), m_Name(replica.empty() ? std::string() : shownPlace(replica))
{
    if (replica.empty())
        return;
    requireSameTables(replica);
    m_Replica = std::make_unique<ConnectionPool>(replica, connections);
}

void ReadPool::read(const std::string& token, const Work& work)
{
    if (m_Replica) {
        const User user = [&] {
            ConnectionPool::Lease connection(m_Catalogue);
            const Read read(*connection);
            return connection->requireUser(token);
        }();
        if (mayUseReplica() && readReplica(user, work))
            return;
    }
    const auto ask = [&] {
        ConnectionPool::Lease connection(m_Catalogue);
        const Read read(*connection);
        work(*connection, connection->requireUser(token));
    };
    try {
        ask();
    } catch (const DatabaseError& error) {
        if (error.kind() != DatabaseError::Kind::Lost)
            throw;
        ask();
    }
}

/// While the replica does not answer, one thread tries it from time to time, and the others do not wait.
bool ReadPool::mayUseReplica()
{
    std::int64_t next = m_NextTrial;
    if (next == 0)
        return true;
    const std::int64_t now = steadyTime();
    return now >= next && m_NextTrial.compare_exchange_strong(next, now + nanoseconds(kPause));
}

/// Returns false if the replica could not answer.
bool ReadPool::readReplica(const User& user, const Work& work)
{
    using Kind = DatabaseError::Kind;
    try {
        ConnectionPool::Lease connection(*m_Replica);
        const Read read(*connection);
        work(*connection, user);
        if (m_NextTrial.exchange(0) != 0)
            std::cerr << "lumo-centre: the replica " + m_Name + " answers again\n";
        return true;
    } catch (const DatabaseError& error) {
        if (error.kind() == Kind::Serialization) // what it read was removed by the changes that it follows
            return false;
        if (error.kind() != Kind::Lost)
            throw;
        if (m_NextTrial.exchange(steadyTime() + nanoseconds(kPause)) == 0)
            std::cerr << "lumo-centre: the replica " + m_Name +
                             " does not answer, reads go to the catalogue's own database: " + error.what() +
                             "\n";
        return false;
    }
}

} // namespace centre
