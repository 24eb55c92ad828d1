#ifndef LUMO_CLI_JOURNAL_H
#define LUMO_CLI_JOURNAL_H

#include <cstdio>
#include <mutex>
#include <string>

namespace cli {

/// Why the last call failed, from the library's log: its methods tell that they failed, the log tells why.
struct Reason
{
    enum class Kind
    {
        None,       ///< no call has failed
        CallFailed, ///< no answer: the connection, the time limit, a refusal
        ErrorResult,
        NullResult
    };

    Kind kind = Kind::None;
    std::string operation;
    std::string text; ///< of CallFailed
};

/// Reads the reason out of one entry; Kind::None when it tells none.
Reason reasonOf(const std::string& entry);

/// Takes the library's log while it lives: keeps the last reason and passes the entries on to a file.
class Journal
{
public:
    /// `path` empty: no file. Throws Failure when the file can't be opened.
    explicit Journal(const std::string& path);
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    Reason lastReason() const;

private:
    void write(const std::string& entry);

    mutable std::mutex m_Mutex;
    std::FILE* m_File = nullptr;
    bool m_Lost = false; ///< the file could not take an entry; nothing more is written
    Reason m_Last;
};

} // namespace cli

#endif
