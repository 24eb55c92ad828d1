#include "cli/Interrupt.h"

#include <csignal>
#include <cstring>

#include <unistd.h>

namespace cli {

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM};

// Read by the handler, so written before it is installed.
volatile std::sig_atomic_t clearsLine = 0;
volatile std::sig_atomic_t tellsEvent = 0;

void writeAll(int descriptor, const char* text)
{
    static_cast<void>(!write(descriptor, text, std::strlen(text)));
}

/// The library can't cancel a transfer, and what has arrived is safe however the process ends.
void endProcess(int signal)
{
    if (clearsLine != 0) {
        writeAll(STDERR_FILENO, "\r\x1b[K");
    }
    if (tellsEvent != 0) {
        writeAll(STDOUT_FILENO, "{\"event\":\"interrupted\"}\n");
    }
    writeAll(STDERR_FILENO, "lumo: interrupted; what arrived is kept: run the same command again to go on\n");
    _exit(128 + signal);
}

void handle(int signal, void (*from)(int), void (*to)(int))
{
    struct sigaction action = {};
    sigaction(signal, nullptr, &action);
    if (action.sa_handler != from) {
        return;
    }
    action.sa_handler = to;
    sigaction(signal, &action, nullptr);
}

} // namespace

Interrupt::Interrupt(bool json)
{
    clearsLine = isatty(STDERR_FILENO);
    tellsEvent = json ? 1 : 0;
    for (const int signal : kSignals) {
        handle(signal, SIG_DFL, endProcess);
    }
}

Interrupt::~Interrupt()
{
    for (const int signal : kSignals) {
        handle(signal, endProcess, SIG_DFL);
    }
}

} // namespace cli
