#ifndef LUMO_CORE_OUTSTANDINGCALL_H
#define LUMO_CORE_OUTSTANDINGCALL_H

/// A call whose answer comes by signal. Its closure owns one, so it counts from its start until its closure
/// is gone, whichever way. While one exists, the manager must stay. Safe from any thread.
class OutstandingCall
{
public:
    OutstandingCall();
    ~OutstandingCall();
    OutstandingCall(const OutstandingCall&) = delete;
    OutstandingCall& operator=(const OutstandingCall&) = delete;

    /// Notes that the process ends: answers that come later touch nothing of the application's or of Qt's.
    /// Returns whether no call is outstanding.
    static bool endAll();
    /// False from endAll on.
    static bool answersReachApplication();
};

#endif
