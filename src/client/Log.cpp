#include "client/Log.h"

#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/components/hubline/Hubline.h"
#include "lumo/components/logger/LumoLogger.h"
#include "lumo/core/TextEncoding.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>

namespace lumo::internal {

namespace {

constexpr int kErrorLevel = 2; // of hubline's lines

/// What is between the level and the place in the code.
std::string messageOf(const std::string& entry)
{
    static const std::string kLevel = " [INFO] ";
    const std::size_t level = entry.find(kLevel);
    if (level == std::string::npos)
        return {};
    const std::size_t begin = level + kLevel.size();
    // An entry that was cut at its limit has lost its end.
    const std::size_t end = std::min(entry.rfind(" File:"), entry.size());
    return end > begin ? entry.substr(begin, end - begin) : std::string();
}

// What the lines of the bulk transfer client have between the transfer and how it ended.
const std::string kFailed = " failed with ";
const std::string kDone = " is done, ";

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
        return reason.text + " is missing, or no value for it";
    case Reason::Kind::ErrorResult:
        return reason.operation + ": the centre reported an error";
    case Reason::Kind::NullResult:
        return reason.operation + ": nothing found";
    case Reason::Kind::None:
        break;
    }
    return "no reason is known";
}

namespace {

/// As clientEnd; none when the line is about another transfer.
std::optional<ClientEnd> clientEndOf(const std::string& line, const std::string& clientTransfer, int code,
                                     const std::string& path)
{
    if (clientTransfer.empty()) {
        const std::string name = path.substr(path.rfind('/') + 1);
        const std::string mark = "/" + name + kFailed + std::to_string(code) + ", ";
        const std::string reason = after(line, mark);
        if (reason.empty())
            return {};
        const bool named = reason.compare(0, name.size(), name) == 0;
        const std::string source = after(line, " of ");
        return ClientEnd{source.substr(0, source.find(named ? "/" + name + kFailed : kFailed)) +
                             (named ? "/" : ": ") + reason,
                         {}};
    }
    if (line.find(" " + clientTransfer + " ") == std::string::npos)
        return {};
    const std::string done = after(line, kDone);
    if (!done.empty())
        return ClientEnd{{}, std::strtoull(done.c_str(), nullptr, 10)};
    return ClientEnd{after(after(line, kFailed), ", "), {}};
}

} // namespace

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
        m_ClientTransfers.clear();
        m_ClientEnds.clear();
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
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto last = m_Last.find(std::this_thread::get_id());
    return last == m_Last.end() ? Reason() : last->second;
}

void Log::forget()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Last.erase(std::this_thread::get_id());
    m_ClientTransfers.erase(std::this_thread::get_id());
}

void Log::take(const std::string& entry)
{
    const Reason reason = reasonOf(entry);
    const std::string transfer = after(messageOf(entry), "RPC TaskID : ");
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (reason.kind != Reason::Kind::None)
        m_Last[std::this_thread::get_id()] = reason;
    if (!transfer.empty())
        m_ClientTransfers[std::this_thread::get_id()] = transfer.substr(0, transfer.find(','));
    listen(entry);
    if (m_Sink)
        m_Sink(entry);
}

void Log::takeStatus(int level, const std::string& line)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (level == kErrorLevel)
        m_Last[std::this_thread::get_id()] = {Reason::Kind::NoChannel, {}, line};
    if (line.find(kFailed) != std::string::npos || line.find(kDone) != std::string::npos) {
        m_ClientEnds.push_back(line);
        m_ClientEnded.notify_all();
    }
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
        m_Answer.ended = true;
        m_Expected.clear();
        m_Answered.notify_all();
    } else if (message.compare(0, error.size(), error) == 0) {
        m_Answer.errors.push_back(message.substr(error.size()));
    }
}

bool Log::expect(const std::string& method)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (!m_Expected.empty())
        return false;
    m_Expected = method;
    m_Answer = {};
    return true;
}

LaterAnswer Log::await(unsigned int timeout)
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    const auto ended = [this] { return m_Answer.ended; };
    if (timeout == 0)
        m_Answered.wait(lock, ended);
    else
        m_Answered.wait_for(lock, std::chrono::milliseconds(timeout), ended);
    return m_Answer;
}

std::string Log::clientTransfer() const
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto last = m_ClientTransfers.find(std::this_thread::get_id());
    return last == m_ClientTransfers.end() ? std::string() : last->second;
}

ClientEnd Log::clientEnd(const std::string& clientTransfer, int code, const std::string& path)
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    ClientEnd end;
    if (clientTransfer.empty() && (code < bulkhaul::kNoConnection || code > bulkhaul::kFailedHere))
        return end; // none of the client's
    // The line comes on a thread of its own.
    m_ClientEnded.wait_for(lock, std::chrono::milliseconds(500), [&] {
        for (auto line = m_ClientEnds.rbegin(); line != m_ClientEnds.rend(); ++line) {
            if (const auto found = clientEndOf(*line, clientTransfer, code, path)) {
                end = *found;
                return true;
            }
        }
        return false;
    });
    return end;
}

} // namespace lumo::internal
