#ifndef LUMO_CLI_JOURNAL_H
#define LUMO_CLI_JOURNAL_H

#include <condition_variable>
#include <cstdio>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace cli {

/// Why the last call failed, from the library's log: its methods tell that they failed, the log tells why.
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
    std::string text; ///< of CallFailed and NoChannel; of FileFailed the file's path, of KeyMissing the key
};

/// Reads the reason out of one entry; Kind::None when it tells none.
Reason reasonOf(const std::string& entry);

/// The identifier that the bulk transfer client gave a transfer, from an entry that tells it; else empty.
std::string clientTransferOf(const std::string& entry);

/// What the log has told of a call that returned at once.
struct LaterAnswer
{
    bool ended = false;
    std::vector<std::string> errors; ///< UTF-8, in the order of the log
};

/// Takes the library's log while it lives: keeps the last reason of each thread and passes the entries on to
/// a file.
class Journal
{
public:
    /// `path` empty: no file. Throws Failure when the file can't be opened.
    explicit Journal(const std::string& path);
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    /// Of the calls of this thread, since it has last forgotten.
    Reason lastReason() const;
    void forget();

    /// The bulk transfer client's identifier of the transfer that this thread has last logged about.
    std::string clientTransfer() const;
    /// Why that transfer failed, as the client's status line tells it; empty when it does not.
    std::string clientReason(const std::string& clientTransfer);
    /// Why the last transfer without an identifier failed with that code, of a file of that name.
    std::string clientReason(int code, const std::string& name);
    /// Whether that transfer, which is done, has kept files that were there.
    bool clientKept(const std::string& clientTransfer);

    /// From now on listens for the end of one call whose lines in the log bear this word.
    void expect(const std::string& word);
    /// Waits for that end up to so many milliseconds; 0 for no limit.
    LaterAnswer await(unsigned int timeout);

private:
    void listen(const std::string& entry);
    void take(const std::string& entry);
    void takeStatus(int level, const std::string& line);
    /// The client's line on the end of a transfer, which comes on a thread of its own: waits for it a moment.
    std::string clientEnd(const std::function<bool(const std::string&)>& isIt);
    void write(const std::string& entry);

    mutable std::mutex m_Mutex;
    std::FILE* m_File = nullptr;
    bool m_Lost = false; ///< the file could not take an entry; nothing more is written
    std::map<std::thread::id, Reason> m_Last;
    std::map<std::thread::id, std::string> m_ClientTransfers;
    std::vector<std::string> m_ClientEnds;
    std::condition_variable m_ClientEnded;
    std::string m_Expected;
    LaterAnswer m_Answer;
    std::condition_variable m_Answered;
};

} // namespace cli

#endif
