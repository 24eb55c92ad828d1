#include "centre/program/ServiceManager.h"

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <iostream>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace centre {

ServiceSignals::ServiceSignals()
{
    sigemptyset(&m_Signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&m_Signals, signal);
    pthread_sigmask(SIG_BLOCK, &m_Signals, nullptr);
}

void ServiceSignals::wait(const std::function<void()>& reload) const
{
    int signal = 0;
    while (sigwait(&m_Signals, &signal) == 0 && signal == SIGHUP)
        reload();
    pthread_sigmask(SIG_UNBLOCK, &m_Signals, nullptr);
}

void notifyServiceManager(const std::string& state)
{
    const char* path = std::getenv("NOTIFY_SOCKET");
    sockaddr_un address = {};
    if (path == nullptr || std::strlen(path) < 2 || std::strlen(path) >= sizeof address.sun_path)
        return;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path, std::strlen(path));
    if (path[0] == '@') // a socket without a file
        address.sun_path[0] = '\0';
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socket < 0)
        return;
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + std::strlen(path));
    if (::sendto(socket, state.data(), state.size(), MSG_NOSIGNAL, reinterpret_cast<sockaddr*>(&address),
                 length) < 0)
        std::cerr << "lumo-centre: can't reach the service manager: " << std::strerror(errno) << "\n";
    ::close(socket);
}

void runService(const ServiceSignals& signals, const std::function<void()>& reload,
                const std::function<void()>& stop)
{
    notifyServiceManager("READY=1");
    signals.wait([&reload] {
        timespec now = {};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        const long long microseconds = now.tv_sec * 1000000LL + now.tv_nsec / 1000;
        notifyServiceManager("RELOADING=1\nMONOTONIC_USEC=" + std::to_string(microseconds));
        try {
            reload();
            std::cout << "lumo-centre: reloaded" << std::endl;
        } catch (const std::exception& error) {
            std::cerr << "lumo-centre: not reloaded: " << error.what() << "\n";
        }
        notifyServiceManager("READY=1");
    });
    notifyServiceManager("STOPPING=1");
    stop();
}

} // namespace centre
