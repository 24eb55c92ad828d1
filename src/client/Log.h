#ifndef LUMO_CLIENT_LOG_H
#define LUMO_CLIENT_LOG_H

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace lumo::internal {

/// Why a call failed, as the library's log says it: a method returns only that it failed.
struct Reason
{
    enum class Kind
    {
        None,       ///< no call has failed
        CallFailed, ///< no answer: the connection, the time limit, a refusal
        NoChannel,  ///< a channel could not be opened
        KeyMissing, ///< a record was not sent, since it lacks what identifies it
        FileFailed, ///< a local file or folder could not be made or fetched
        ErrorResult,
        NullResult
    };

    Kind kind = Kind::None;
    std::string operation;
    /// Of CallFailed and NoChannel; of FileFailed the file's path, of KeyMissing the key, of ErrorResult and
    /// NullResult the centre's reason, if it sent one.
    std::string text;
};

/// Reads the reason out of one entry; Kind::None when it has none.
Reason reasonOf(const std::string& entry);

/// The reason in words for a message; "no reason is known" for Kind::None.
std::string describe(const Reason& reason);

/// What the log has said of a call that returned at once.
struct LaterAnswer
{
    bool ended = false;
    std::vector<std::string> errors; ///< UTF-8, in the order of the log
};

/// Reads the library's log while a session is open. There is one for the process, never destroyed, since a
/// thread of a component may log until the process has ended. Safe from any thread.
class Log
{
public:
    using Sink = std::function<void(const std::string&)>;

    static Log& instance();

    /// Takes the log over, and hands each entry on to `sink`.
    void open(const Sink& sink);
    /// Drops the sink, which runs no more when this returns.
    void dropSink();
    /// Lets go of the log: later entries are discarded.
    void close();

    /// Of the calls of this thread, since it has last forgotten.
    Reason lastReason() const;
    void forget();

    /// From now on listens for the end of one call whose lines in the log have this method's name. Returns
    /// where its answer will be; null when an earlier such call has not ended.
    std::shared_ptr<LaterAnswer> expect(const std::string& method);
    /// The call was not made.
    void expectNothing();
    /// Waits for that end up to so many milliseconds; 0 for no limit.
    LaterAnswer await(const std::shared_ptr<LaterAnswer>& answer, unsigned int timeout);

private:
    Log() = default;
    ~Log() = delete;

    void take(const std::string& entry);
    void takeStatus(int level, const std::string& line);
    void listen(const std::string& entry);

    mutable std::mutex m_Mutex;
    Sink m_Sink;
    std::map<std::thread::id, Reason> m_Last;
    std::string m_Expected;                ///< of the call that is to end
    std::shared_ptr<LaterAnswer> m_Answer; ///< its own: who waits for an earlier one may not have woken yet
    std::condition_variable m_Answered;
};

} // namespace lumo::internal

#endif
