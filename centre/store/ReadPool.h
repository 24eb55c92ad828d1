#ifndef LUMO_CENTRE_STORE_READPOOL_H
#define LUMO_CENTRE_STORE_READPOOL_H

#include "centre/store/ConnectionPool.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace centre {

/// Has reads answered by a replica of the catalogue, if there is one, and by the catalogue itself while the
/// replica can't answer. Users and their rights are always those of the catalogue itself. Safe from any
/// thread.
class ReadPool
{
public:
    using Work = std::function<void(Connection& connection, const User& user)>;

    /// `replica` is the address of a server that follows the catalogue's, or empty. Throws Error for tables
    /// of another version there; a replica that can't be reached is used when it can.
    ReadPool(ConnectionPool& catalogue, const std::string& replica,
             int connections = ConnectionPool::kConnections);

    /// Runs work that only reads for the user of a token. It is run again, from the start, when the replica
    /// fails or the connection is lost meanwhile. Throws std::runtime_error for a token that is refused.
    void read(const std::string& token, const Work& work);

    /// Null if there is no replica.
    const ConnectionPool* replica() const { return m_Replica.get(); }

private:
    bool mayUseReplica();
    bool readReplica(const User& user, const Work& work);

    ConnectionPool& m_Catalogue;
    std::unique_ptr<ConnectionPool> m_Replica;
    const std::string m_Name;
    std::atomic<std::int64_t> m_NextTrial{0}; ///< nanoseconds of the steady clock; 0: the replica answers
};

} // namespace centre

#endif
