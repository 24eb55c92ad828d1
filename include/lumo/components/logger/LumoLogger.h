#ifndef LUMO_COMPONENTS_LOGGER_LUMOLOGGER_H
#define LUMO_COMPONENTS_LOGGER_LUMOLOGGER_H

#include "lumo/components/platform/Export.h"

#include <boost/function.hpp>

#include <cstddef>
#include <string>

/// The process-wide sink of the library's log lines. They go to standard error until the application sets
/// another destination.
///
/// One `write` is one entry and is never interleaved with another. All members are safe from any
/// thread; entries that are written while the destination changes go to the old or the new one.
/// The object is never destroyed, so a thread may write while the process ends.
class LUMO_EXPORT CLumoLogger
{
public:
    /// Receives one entry: its bytes (in the system code page) and their number. Called by the
    /// writing thread, one call at a time. What it writes to the logger or throws is dropped, and it can't
    /// change the destination.
    typedef boost::function<void(const char*, int)> Callback;

    static CLumoLogger* GetSinglePton();

    /// Writes `length` bytes as one entry, unchanged. A null text or a length of 0 or less writes nothing.
    void write(const char* text, int length);

    /// Sends entries to standard error (the default).
    void toStandardError();
    /// Sends entries to a file, appending; each is in the file when `write` returns. At `maximumBytes`
    /// lumo.log is renamed to lumo.1.log (that one to lumo.2.log and so on), and at most `files` old ones are
    /// kept. Returns false when the file can't be opened; the destination then stays.
    bool toFile(const std::string& path, std::size_t maximumBytes = std::size_t{64} << 20,
                std::size_t files = 3);
    /// Sends entries to the application; an empty function discards them. When this returns, the former
    /// callback is not called any more.
    void toCallback(const Callback& callback);

private:
    CLumoLogger();
    ~CLumoLogger() = delete;

    CLumoLogger(const CLumoLogger&) = delete;
    CLumoLogger& operator=(const CLumoLogger&) = delete;

    struct State;
    State* m_State;
};

#endif
