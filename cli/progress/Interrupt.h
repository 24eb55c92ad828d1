#ifndef LUMO_CLI_PROGRESS_INTERRUPT_H
#define LUMO_CLI_PROGRESS_INTERRUPT_H

namespace cli {

/// While it lives, SIGINT and SIGTERM end the process at once with 128 + their number, after a message
/// that the transfers can be continued. A signal that the parent process had set to be ignored stays ignored.
/// Only one object at a time.
class Interrupt
{
public:
    /// `json`: prints an event on standard output, too.
    explicit Interrupt(bool json);
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
};

/// While it lives, the first SIGINT or SIGTERM is only noted, for work that must not be left halfway; a
/// second one ends the process at once. Otherwise as Interrupt.
class NotedInterrupt
{
public:
    NotedInterrupt();
    ~NotedInterrupt();
    NotedInterrupt(const NotedInterrupt&) = delete;
    NotedInterrupt& operator=(const NotedInterrupt&) = delete;

    /// The signal that came; 0 for none.
    static int signal();
};

} // namespace cli

#endif
