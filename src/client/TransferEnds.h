#ifndef LUMO_CLIENT_TRANSFERENDS_H
#define LUMO_CLIENT_TRANSFERENDS_H

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>

namespace bulkhaul {
struct TransferEnd;
}

namespace lumo::internal {

/// How the calls of the bulk transfer client on a thread ended: one for a transfer that moves a whole path,
/// one for each file of a walk through the catalogue.
struct EndSum
{
    std::uint64_t calls = 0;
    std::uint64_t filesKept = 0;
    std::uint64_t bytesMoved = 0;
    std::string reason;  ///< of the last failure
    std::string boxPath; ///< of that call
};

/// Collects what the bulk transfer client reports of ends while a session is open. There is one for the
/// process, never destroyed. Safe from any thread.
class TransferEnds
{
public:
    static TransferEnds& instance();

    void open();
    void close();

    /// What was reported on this thread since the last call.
    EndSum take();

private:
    TransferEnds() = default;
    ~TransferEnds() = delete;

    void add(const bulkhaul::TransferEnd& end);

    std::mutex m_Mutex;
    std::map<std::thread::id, EndSum> m_Sums;
};

} // namespace lumo::internal

#endif
