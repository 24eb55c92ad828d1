#ifndef LUMO_CENTRE_HTTP_SLOWCLIENTS_H
#define LUMO_CENTRE_HTTP_SLOWCLIENTS_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>
#include <thread>

namespace centre {

/// Shuts connections down whose clients take too long to send a whole request, however often they send a
/// byte. Safe from any thread.
class SlowClients
{
public:
    explicit SlowClients(std::chrono::seconds longest);
    ~SlowClients();

    SlowClients(const SlowClients&) = delete;
    SlowClients& operator=(const SlowClients&) = delete;

    /// A connection that is watched.
    struct Watched
    {
        int socket;
        /// The moment since which the client is to send something; the largest one while the server has all.
        std::atomic<std::chrono::steady_clock::time_point> since;
        std::list<Watched>::iterator place;
    };

    /// The client is to send a request from now on.
    Watched& add(int socket);
    /// To be called before the socket is closed.
    void remove(Watched& watched);

    static void expect(Watched& watched) { watched.since = std::chrono::steady_clock::now(); }
    static void arrived(Watched& watched) { watched.since = std::chrono::steady_clock::time_point::max(); }

private:
    void run();

    const std::chrono::seconds m_Longest;
    std::mutex m_Mutex; ///< guards what follows
    std::condition_variable m_Stopping;
    bool m_Stopped = false;
    std::list<Watched> m_Watched;
    std::thread m_Thread;
};

} // namespace centre

#endif
