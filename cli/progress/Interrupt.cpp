#include "cli/progress/Interrupt.h"

#include <atomic>
#include <csignal>
#include <cstring>

#include <poll.h>
#include <unistd.h>

namespace cli {

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM};

// Read by the handler, so written before it is installed.
volatile std::sig_atomic_t clearsLine = 0;
volatile std::sig_atomic_t printsEvent = 0;
// Two threads may receive signals at the same time.
std::atomic<int> noted{0};

/// Writes only what is read at once: a full pipe would block the process, a closed one would end it.
void writeAtOnce(int descriptor, const char* text)
{
    pollfd ready = {descriptor, POLLOUT, 0};
    if (poll(&ready, 1, 0) == 1 && ready.revents == POLLOUT)
        static_cast<void>(!write(descriptor, text, std::strlen(text)));
}

[[noreturn]] void endProcess(int signal, const char* message)
{
    if (clearsLine != 0)
        writeAtOnce(STDERR_FILENO, "\r\x1b[K");
    if (printsEvent != 0)
        writeAtOnce(STDOUT_FILENO, "{\"event\":\"interrupted\"}\n");
    writeAtOnce(STDERR_FILENO, message);
    _exit(128 + signal);
}

/// Ends the process: the library can't cancel a transfer, and what has arrived is safe in any case.
void endTransfers(int signal)
{
    endProcess(signal, "lumo: interrupted; what arrived is kept: run the same command again to go on\n");
}

void note(int signal)
{
    if (noted.exchange(signal) != 0)
        endProcess(signal, "lumo: interrupted twice; what the last call did is not known\n");
}

void handleAll(void (*from)(int), void (*to)(int))
{
    for (const int signal : kSignals) {
        struct sigaction action = {};
        sigaction(signal, nullptr, &action);
        if (action.sa_handler == from) {
            action.sa_handler = to;
            action.sa_flags |= SA_RESTART; // a blocked write to a pipe continues
            sigaction(signal, &action, nullptr);
        }
    }
}

} // namespace

Interrupt::Interrupt(Then then, bool event) : m_Handler(then == Then::EndTransfers ? endTransfers : note)
{
    clearsLine = isatty(STDERR_FILENO);
    printsEvent = event ? 1 : 0;
    noted = 0;
    handleAll(SIG_DFL, m_Handler);
}

Interrupt::~Interrupt()
{
    handleAll(m_Handler, SIG_DFL);
}

int Interrupt::signal()
{
    return noted;
}

} // namespace cli
