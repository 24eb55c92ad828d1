#ifndef LUMO_CENTRE_STALLEDCALLS_H
#define LUMO_CENTRE_STALLEDCALLS_H

#include <google/protobuf/service.h>

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace centre {

/// Calls that get no answer while their callers wait. They are held without a thread of the server, so
/// that other calls go on. Safe from any thread.
class StalledCalls
{
public:
    StalledCalls();
    ~StalledCalls(); ///< ends all calls

    StalledCalls(const StalledCalls&) = delete;
    StalledCalls& operator=(const StalledCalls&) = delete;

    /// Keeps a call until its caller has gone or `end`.
    void hold(google::protobuf::RpcController* controller, google::protobuf::Closure* done);
    /// Fails all calls; those that come later fail at once.
    void end();

private:
    struct Call
    {
        google::protobuf::RpcController* controller;
        google::protobuf::Closure* done;
    };

    void watch();
    std::vector<Call> takeEnded();

    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::vector<Call> m_Calls;
    bool m_Ended = false;
    std::thread m_Watcher;
};

} // namespace centre

#endif
