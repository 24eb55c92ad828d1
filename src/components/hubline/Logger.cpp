#include "lumo/components/hubline/Hubline.h"

#include <atomic>
#include <mutex>

namespace hubline {

struct Logger::State
{
    std::mutex mutex;
    Callback callback;
};

namespace {

std::atomic<Logger*> theLogger{nullptr};
std::mutex creation;

} // namespace

Logger::Logger() : m_State(new State)
{
}

Logger* Logger::Instance(bool create)
{
    Logger* logger = theLogger;
    if (logger != nullptr || !create)
        return logger;
    const std::lock_guard<std::mutex> lock(creation);
    if (theLogger == nullptr)
        theLogger = new Logger;
    return theLogger;
}

void Logger::log(int level, const std::string& text)
{
    thread_local bool logging = false;
    if (logging)
        return;
    const std::lock_guard<std::mutex> lock(m_State->mutex);
    if (!m_State->callback)
        return;
    logging = true;
    try {
        m_State->callback(level, text);
    } catch (...) {
        // What the application's function throws must not end a transfer's status thread.
    }
    logging = false;
}

void Logger::toCallback(const Callback& callback)
{
    const std::lock_guard<std::mutex> lock(m_State->mutex);
    m_State->callback = callback;
}

} // namespace hubline
