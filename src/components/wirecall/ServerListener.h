#ifndef LUMO_WIRECALL_SERVERLISTENER_H
#define LUMO_WIRECALL_SERVERLISTENER_H

#include "lumo/components/platform/Export.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

struct addrinfo;

namespace wirecall {

/// Listens for connections and passes them on, as many at once as it may. gRPC's own listener knows no limits
/// and ends for good when the process has no descriptor left.
class LUMO_EXPORT ServerListener
{
public:
    struct Limits
    {
        int connections;     ///< at once; 0: as many as half of the process's descriptors allow
        int ofClientAddress; ///< the same of one client address; 0: all of them
        /// Returns the bytes that tell a client why its connection is closed; null: it is closed without.
        std::string (*refusal)(const char* reason);
    };
    /// Gets each connection, a socket that it owns, on the listener's thread.
    using Connected = std::function<void(int socket)>;

    ServerListener() = default;
    ~ServerListener(); ///< stops; connections that were passed on go on

    ServerListener(const ServerListener&) = delete;
    ServerListener& operator=(const ServerListener&) = delete;

    /// Binds every address of a host; port 0 takes a free one. Returns false when one of them can't be bound.
    bool bind(const std::string& host, int port);
    int port() const { return m_Port; }
    /// To be called once, after `bind`. Returns false, with the reason in `error`, without memory for it.
    bool start(const Limits& limits, Connected connected, std::string& error);

    int connections() const { return m_Connections; }
    std::uint64_t refused() const { return m_Refusals; }

private:
    bool bindOne(const addrinfo& address);
    void run();
    void accept(int listening);
    void take(int socket, const std::string& client);
    void refuse(int socket, const char* reason);
    void ended(int watched);

    Limits m_Limits{};
    Connected m_Connected;
    std::vector<int> m_Listening;
    int m_Port = 0;
    int m_Events = -1; ///< epoll
    int m_Stop = -1;   ///< eventfd
    bool m_Pauses = false;
    /// A second descriptor of each connection's socket shows when gRPC has shut that down.
    std::unordered_map<int, std::string> m_Watched; ///< with the client's address
    std::unordered_map<std::string, int> m_OfClient;
    std::deque<int> m_Refused; ///< kept open for a while: their clients shall read the reason
    std::atomic<int> m_Connections{0};
    std::atomic<std::uint64_t> m_Refusals{0};
    std::thread m_Thread;
};

} // namespace wirecall

#endif
