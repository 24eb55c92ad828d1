#include "lumo/components/logger/LumoLogger.h"

#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <memory>
#include <mutex>
#include <utility>

namespace {

/// True while this thread writes an entry.
thread_local bool writing = false;

using Sink = std::shared_ptr<spdlog::sinks::sink>;

class CallbackSink final : public spdlog::sinks::base_sink<spdlog::details::null_mutex>
{
public:
    explicit CallbackSink(CLumoLogger::Callback callback) : m_Callback(std::move(callback)) {}

private:
    void sink_it_(const spdlog::details::log_msg& entry) override
    {
        m_Callback(entry.payload.data(), static_cast<int>(entry.payload.size()));
    }
    void flush_() override {}

    CLumoLogger::Callback m_Callback;
};

/// Makes a sink that writes an entry's bytes and nothing else.
template <class Type, class... Arguments>
Sink makeSink(Arguments&&... arguments)
{
    auto sink = std::make_shared<Type>(std::forward<Arguments>(arguments)...);
    sink->set_formatter(
        std::make_unique<spdlog::pattern_formatter>("%v", spdlog::pattern_time_type::local, ""));
    return sink;
}

} // namespace

struct CLumoLogger::State
{
    bool use(Sink next)
    {
        if (writing)
            return false;
        const std::lock_guard<std::mutex> lock(mutex);
        sink.swap(next);
        return true;
    }

    std::mutex mutex; ///< held while an entry is written, so the sinks need no lock of their own
    Sink sink = makeSink<spdlog::sinks::stderr_sink_st>();
};

CLumoLogger::CLumoLogger() : m_State(new State)
{
}

CLumoLogger* CLumoLogger::GetSinglePton()
{
    static CLumoLogger* const logger = new CLumoLogger;
    return logger;
}

void CLumoLogger::write(const char* text, int length)
{
    if (text == nullptr || length <= 0)
        return;
    if (writing) // a callback that logs, perhaps by a library method that it calls
        return;
    const spdlog::string_view_t payload(text, static_cast<std::size_t>(length));
    const std::lock_guard<std::mutex> lock(m_State->mutex);
    writing = true;
    try {
        // The entry has its time already, so the clock is not read again.
        m_State->sink->log(spdlog::details::log_msg({}, {}, {}, spdlog::level::info, payload));
        // An entry must survive a crash right after it.
        m_State->sink->flush();
    } catch (...) {
        // A full disk must not fail the call that is being logged.
    }
    writing = false;
}

void CLumoLogger::toStandardError()
{
    m_State->use(makeSink<spdlog::sinks::stderr_sink_st>());
}

bool CLumoLogger::toFile(const std::string& path, std::size_t maximumBytes, std::size_t files)
{
    try {
        return m_State->use(makeSink<spdlog::sinks::rotating_file_sink_st>(path, maximumBytes, files));
    } catch (const std::exception&) {
        return false;
    }
}

void CLumoLogger::toCallback(const Callback& callback)
{
    m_State->use(callback ? makeSink<CallbackSink>(callback) : makeSink<spdlog::sinks::null_sink_st>());
}
