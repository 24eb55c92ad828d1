#include "client/Log.h"

#include "lumo/components/hubline/Hubline.h"
#include "lumo/components/logger/LumoLogger.h"
#include "lumo/core/LastFailure.h"
#include "lumo/core/TextEncoding.h"

#include <algorithm>
#include <chrono>
#include <string_view>

namespace lumo::internal {

namespace {

constexpr int kErrorLevel = 2; // of hubline's lines

constexpr std::string_view kLevel = " [INFO] ";

/// Whether the entry is the first or the last of a method, as most are.
bool isFirstOrLast(const std::string& entry)
{
    constexpr std::string_view kFirst = "Enter Function : ", kLast = "Leave Function : ";
    const std::size_t level = entry.find(kLevel);
    return level != std::string::npos && (entry.compare(level + kLevel.size(), kFirst.size(), kFirst) == 0 ||
                                          entry.compare(level + kLevel.size(), kLast.size(), kLast) == 0);
}

/// What is between the level and the place in the code.
std::string messageOf(const std::string& entry)
{
    const std::size_t level = entry.find(kLevel);
    if (level == std::string::npos)
        return {};
    const std::size_t begin = level + kLevel.size();
    // An entry that was cut at its limit has lost its end.
    const std::size_t end = std::min(entry.rfind(" File:"), entry.size());
    return end > begin ? entry.substr(begin, end - begin) : std::string();
}

/// What follows `before` in the text; empty where that is missing.
std::string after(const std::string& text, const std::string& before)
{
    const std::size_t begin = text.find(before);
    return begin == std::string::npos ? std::string() : text.substr(begin + before.size());
}

} // namespace

Reason reasonOf(const std::string& entry)
{
    static const std::string kError = "Error : ";
    if (isFirstOrLast(entry))
        return {};
    const std::string message = messageOf(entry);
    const std::string missing = after(message, "Can't Find Field : ");
    if (!missing.empty())
        return {Reason::Kind::KeyMissing, {}, missing.substr(0, missing.find('\n'))};
    const std::size_t blank = message.find(' ');
    if (blank == std::string::npos)
        return {};
    Reason reason;
    const std::string rest = message.substr(blank + 1);
    if (rest.compare(0, kError.size(), kError) == 0) {
        reason.kind = Reason::Kind::CallFailed;
        reason.text = convertToUtf8(rest.substr(kError.size()));
    } else if (rest == "Result Error" || rest == "Error") {
        reason.kind = Reason::Kind::ErrorResult;
    } else if (rest == "Result NULL") {
        reason.kind = Reason::Kind::NullResult;
    } else {
        const std::string failed = after(message, "Failed : ");
        reason.text = convertToUtf8(failed.substr(0, failed.find('\n')));
        if (reason.text.empty())
            return {};
        // Some of these lines end in an exclamation mark.
        if (reason.text.back() == '!')
            reason.text.pop_back();
        reason.kind = Reason::Kind::FileFailed;
    }
    reason.operation = message.substr(0, blank);
    return reason;
}

std::string describe(const Reason& reason)
{
    switch (reason.kind) {
    case Reason::Kind::CallFailed:
        return reason.operation + ": " + reason.text;
    case Reason::Kind::NoChannel:
    case Reason::Kind::FileFailed:
        return reason.text;
    case Reason::Kind::KeyMissing:
        return reason.text + " is missing or has no value";
    case Reason::Kind::ErrorResult:
        return reason.operation + ": " + (reason.text.empty() ? "the centre reported an error" : reason.text);
    case Reason::Kind::NullResult:
        return reason.operation + ": " + (reason.text.empty() ? "nothing found" : reason.text);
    case Reason::Kind::None:
        break;
    }
    return "no reason is known";
}

Log& Log::instance()
{
    static Log* const log = new Log;
    return *log;
}

void Log::open(const Sink& sink)
{
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Sink = sink;
        m_Last.clear();
        m_Expected.clear();
    }
    CLumoLogger::GetSinglePton()->toCallback(
        [this](const char* text, int length) { take(std::string(text, static_cast<std::size_t>(length))); });
    hubline::Logger::Instance(true)->toCallback(
        [this](int level, const std::string& text) { takeStatus(level, text); });
}

void Log::dropSink()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Sink = nullptr;
}

void Log::close()
{
    hubline::Logger::Instance(true)->toCallback({});
    CLumoLogger::GetSinglePton()->toCallback({});
    dropSink();
}

Reason Log::lastReason() const
{
    Reason reason;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        const auto last = m_Last.find(std::this_thread::get_id());
        if (last == m_Last.end())
            return {};
        reason = last->second;
    }
    // The fixed lines of the log have no room for what the centre says of a refusal.
    const bool isAnswer = reason.kind == Reason::Kind::ErrorResult || reason.kind == Reason::Kind::NullResult;
    if (const LastFailure failure = lastFailure(); isAnswer && failure.operation == reason.operation)
        reason.text = failure.reason;
    return reason;
}

void Log::forget()
{
    forgetLastFailure();
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Last.erase(std::this_thread::get_id());
}

void Log::take(const std::string& entry)
{
    const Reason reason = reasonOf(entry);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (reason.kind != Reason::Kind::None)
        m_Last[std::this_thread::get_id()] = reason;
    listen(entry);
    if (m_Sink)
        m_Sink(entry);
}

void Log::takeStatus(int level, const std::string& line)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (level == kErrorLevel)
        m_Last[std::this_thread::get_id()] = {Reason::Kind::NoChannel, {}, line};
    if (m_Sink)
        m_Sink(line + "\r\n");
}

void Log::listen(const std::string& entry)
{
    if (m_Expected.empty())
        return;
    const std::string message = messageOf(entry);
    const std::string error = m_Expected + " Error : ";
    if (message == "Leave Function : " + m_Expected) {
        m_Answer->ended = true;
        m_Expected.clear();
        m_Answered.notify_all();
    } else if (message.compare(0, error.size(), error) == 0) {
        m_Answer->errors.push_back(message.substr(error.size()));
    }
}

std::shared_ptr<LaterAnswer> Log::expect(const std::string& method)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (!m_Expected.empty())
        return {};
    m_Answer = std::make_shared<LaterAnswer>();
    m_Expected = method;
    return m_Answer;
}

void Log::expectNothing()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Expected.clear();
}

LaterAnswer Log::await(const std::shared_ptr<LaterAnswer>& answer, unsigned int timeout)
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    const auto ended = [&answer] { return answer->ended; };
    if (timeout == 0)
        m_Answered.wait(lock, ended);
    else
        m_Answered.wait_for(lock, std::chrono::milliseconds(timeout), ended);
    return *answer;
}

} // namespace lumo::internal
