#include "centre/observe/CallLog.h"

#include "centre/base/Error.h"
#include "centre/base/Text.h"

#include <nlohmann/json.hpp>

#include <spdlog/async_logger.h>
#include <spdlog/details/file_helper.h>
#include <spdlog/details/thread_pool.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <iostream>
#include <mutex>

namespace centre {

namespace {

constexpr std::size_t kLongestQueue = 8192;

const char* nameOf(Severity severity)
{
    switch (severity) {
    case Severity::Info:
        return "info";
    case Severity::Warning:
        return "warning";
    case Severity::Error:
        return "error";
    }
    return "";
}

/// The present time of day as ISO 8601 has it, in UTC with milliseconds.
std::string timestamp()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const std::time_t seconds = std::chrono::duration_cast<std::chrono::seconds>(now).count();
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(now).count() % 1000;
    std::tm parts = {};
    ::gmtime_r(&seconds, &parts);
    char text[64];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    static_cast<void>(
        std::snprintf(text + length, sizeof text - length, ".%03dZ", static_cast<int>(milliseconds)));
    return text;
}

/// Quotes a value that would not be one word otherwise.
std::string asWord(const std::string& value)
{
    std::string plain = escaped(value);
    if (!plain.empty() && plain.find_first_of(" \"=\\") == std::string::npos)
        return plain;
    std::string quoted = "\"";
    for (const char letter : plain) {
        if (letter == '"')
            quoted += '\\';
        quoted += letter;
    }
    return quoted + "\"";
}

/// A file that can be opened again, or standard error. Another program may shorten the file meanwhile.
class LineSink : public spdlog::sinks::base_sink<std::mutex>
{
public:
    explicit LineSink(const std::string& file)
    {
        if (!file.empty())
            m_File.open(file);
        m_HasFile = !file.empty();
    }

    void reopen()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (m_HasFile)
            m_File.reopen(false);
    }

protected:
    void sink_it_(const spdlog::details::log_msg& message) override
    {
        spdlog::memory_buf_t line;
        line.append(message.payload.begin(), message.payload.end());
        line.push_back('\n');
        if (!m_HasFile) {
            static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr));
            return;
        }
        m_File.write(line);
        m_File.flush();
    }
    void flush_() override {}

private:
    spdlog::details::file_helper m_File;
    bool m_HasFile = false;
};

double milliseconds(const wirecall::CallReport& report)
{
    return std::chrono::duration<double, std::milli>(report.duration).count();
}

std::string asText(const std::string& server, const ObservedCall& call, const wirecall::CallReport& report,
                   const CallOutcome& outcome)
{
    char numbers[128];
    static_cast<void>(std::snprintf(numbers, sizeof numbers, " ms=%.3f received=%llu sent=%llu",
                                    milliseconds(report),
                                    static_cast<unsigned long long>(report.bytesReceived),
                                    static_cast<unsigned long long>(report.bytesSent)));
    std::string line = timestamp() + " " + nameOf(outcome.severity);
    line += " server=" + asWord(server) + " peer=" + asWord(call.peer);
    line += " user=" + asWord(call.user) + " company=" + asWord(call.company);
    line += " operation=" + std::string(call.operation) + " result=" + std::string(outcome.result);
    return line + numbers;
}

std::string asJson(const std::string& server, const ObservedCall& call, const wirecall::CallReport& report,
                   const CallOutcome& outcome)
{
    const nlohmann::ordered_json line = {
        {"time", timestamp()},
        {"level", nameOf(outcome.severity)},
        {"server", server},
        {"peer", call.peer},
        {"user", call.user},
        {"company", call.company},
        {"operation", call.operation},
        {"result", outcome.result},
        {"ms", milliseconds(report)},
        {"received", report.bytesReceived},
        {"sent", report.bytesSent},
    };
    return line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

} // namespace

struct CallLog::Impl
{
    explicit Impl(const Options& wanted)
        : options(wanted),
          sink(std::make_shared<LineSink>(wanted.file)),
          queue(std::make_shared<spdlog::details::thread_pool>(kLongestQueue, 1)),
          logger(std::make_shared<spdlog::async_logger>("calls", sink, queue,
                                                        spdlog::async_overflow_policy::overrun_oldest))
    {
    }

    const Options options;
    const std::shared_ptr<LineSink> sink;
    std::shared_ptr<spdlog::details::thread_pool> queue;
    const std::shared_ptr<spdlog::async_logger> logger;
};

CallLog::CallLog(const Options& options)
{
    try {
        m_Impl = std::make_unique<Impl>(options);
    } catch (const spdlog::spdlog_ex&) {
        throw Error(ExitCode::Failed, "can't write the log " + options.file);
    }
}

CallLog::~CallLog()
{
    const std::uint64_t lost = dropped();
    m_Impl->queue.reset(); // its thread writes what is left
    if (lost > 0)
        std::cerr << "lumo-centre: the call log has lost " + counted(lost, "line") + "\n";
}

void CallLog::reopen()
{
    try {
        m_Impl->sink->reopen();
    } catch (const spdlog::spdlog_ex&) {
        throw Error(ExitCode::Failed, "can't write the log " + m_Impl->options.file);
    }
}

std::uint64_t CallLog::dropped() const
{
    return m_Impl->queue->overrun_counter();
}

void CallLog::ended(const Observed& endpoint, const ObservedCall& call, const wirecall::CallReport& report)
{
    const CallOutcome outcome(report);
    if (outcome.severity < m_Impl->options.least)
        return;
    const bool isJson = m_Impl->options.format == Format::Json;
    m_Impl->logger->info((isJson ? asJson : asText)(endpoint.name(), call, report, outcome));
}

} // namespace centre
