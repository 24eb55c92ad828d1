#include "centre/http/SlowClients.h"

#include <sys/socket.h>

#include <iterator>

namespace centre {

using Clock = std::chrono::steady_clock;

SlowClients::SlowClients(std::chrono::seconds longest) : m_Longest(longest), m_Thread([this] { run(); })
{
}

SlowClients::~SlowClients()
{
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Stopped = true;
    }
    m_Stopping.notify_one();
    m_Thread.join();
}

SlowClients::Watched& SlowClients::add(int socket)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    Watched& watched = m_Watched.emplace_back();
    watched.socket = socket;
    watched.since = Clock::now();
    watched.place = std::prev(m_Watched.end());
    return watched;
}

void SlowClients::remove(Watched& watched)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Watched.erase(watched.place);
}

void SlowClients::run()
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    while (!m_Stopping.wait_for(lock, std::chrono::seconds(1), [this] { return m_Stopped; })) {
        const Clock::time_point latest = Clock::now() - m_Longest;
        for (Watched& each : m_Watched)
            if (each.since.load() < latest)
                ::shutdown(each.socket, SHUT_RDWR); // the server sees its end and closes it
    }
}

} // namespace centre
