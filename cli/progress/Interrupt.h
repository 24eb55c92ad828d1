#ifndef LUMO_CLI_PROGRESS_INTERRUPT_H
#define LUMO_CLI_PROGRESS_INTERRUPT_H

namespace cli {

/// While it lives, it handles SIGINT and SIGTERM. A signal that the parent process had set to be ignored
/// stays ignored. Only one object at a time.
class Interrupt
{
public:
    enum class Then
    {
        /// Ends the process at once with 128 + the signal's number, after a message that the transfers can be
        /// continued.
        EndTransfers,
        /// Only notes the first signal, for work that must not be left halfway; a second one ends the
        /// process.
        FinishWork
    };

    /// `event`: prints an event on standard output too, when it ends the process.
    explicit Interrupt(Then then, bool event = false);
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    /// The signal that was noted; 0 for none.
    static int signal();

private:
    void (*m_Handler)(int);
};

} // namespace cli

#endif
