#ifndef LUMO_WIRECALL_TRAFFIC_H
#define LUMO_WIRECALL_TRAFFIC_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace wirecall {

/// Returns how many bytes the connections of this process to `peer` have received, and sent and had
/// acknowledged; 0 if there is none. `peer` is as gRPC names it, "ipv4:127.0.0.1:80" or "ipv6:[::1]:80".
std::uint64_t bytesMoved(const std::string& peer);

/// Finds out whether the connection of a call has stalled. gRPC reports whole messages only, which may take
/// longer than the stall limit over a slow link, so the bytes of the connection itself are counted.
class StallWatch
{
public:
    explicit StallWatch(std::chrono::milliseconds limit);

    /// When to look again, as long as no message has come.
    std::chrono::system_clock::time_point nextLook() const;
    /// Looks. Returns whether nothing has moved for the limit, as far as the looks before have seen.
    bool isStalled(const std::string& peer);

private:
    using Clock = std::chrono::steady_clock;

    const std::chrono::milliseconds m_Limit;
    std::optional<std::uint64_t> m_Bytes; ///< at the last progress
    Clock::time_point m_LastProgress;
};

} // namespace wirecall

#endif
