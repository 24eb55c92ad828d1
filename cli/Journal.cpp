#include "cli/Journal.h"

#include "cli/ExitCode.h"

#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/components/hubline/Hubline.h"
#include "lumo/components/logger/LumoLogger.h"
#include "lumo/core/TextEncoding.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>

namespace cli {

namespace {

constexpr int kErrorLevel = 2; // of hubline's lines

// What the lines of the bulk transfer client have between the transfer and how it ended.
const std::string kFailed = " failed with ";
const std::string kDone = " is done, ";

/// What stands between the level and the place in the code.
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

/// What stands between the two texts, or behind the first where there is no second; else empty.
std::string between(const std::string& text, const std::string& before, const std::string& after)
{
    const std::size_t begin = text.find(before);
    if (begin == std::string::npos)
        return {};
    const std::string rest = text.substr(begin + before.size());
    return rest.substr(0, rest.find(after));
}

} // namespace

std::string clientTransferOf(const std::string& entry)
{
    return between(messageOf(entry), "RPC TaskID : ", ",");
}

Reason reasonOf(const std::string& entry)
{
    static const std::string kError = "Error : ";
    const std::string message = messageOf(entry);
    const std::string missing = between(message, "Can't Find Field : ", "\n");
    if (!missing.empty())
        return {Reason::Kind::KeyMissing, {}, missing};
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
        // Some of these lines end in an exclamation mark.
        reason.text = convertToUtf8(between(message, "Failed : ", "\n"));
        if (reason.text.empty())
            return {};
        if (reason.text.back() == '!')
            reason.text.pop_back();
        reason.kind = Reason::Kind::FileFailed;
    }
    reason.operation = message.substr(0, blank);
    return reason;
}

Journal::Journal(const std::string& path)
{
    if (!path.empty()) {
        m_File = std::fopen(path.c_str(), "ae");
        if (m_File == nullptr)
            refuse("can't write the log file '" + path + "': " + std::strerror(errno));
    }
    CLumoLogger::GetSinglePton()->toCallback(
        [this](const char* text, int length) { take(std::string(text, static_cast<std::size_t>(length))); });
    hubline::Logger::Instance(true)->toCallback(
        [this](int level, const std::string& text) { takeStatus(level, text); });
}

Journal::~Journal()
{
    hubline::Logger::Instance(true)->toCallback({});
    CLumoLogger::GetSinglePton()->toCallback({});
    if (m_File != nullptr)
        static_cast<void>(std::fclose(m_File));
}

Reason Journal::lastReason() const
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto last = m_Last.find(std::this_thread::get_id());
    return last == m_Last.end() ? Reason() : last->second;
}

void Journal::forget()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Last.erase(std::this_thread::get_id());
}

void Journal::take(const std::string& entry)
{
    const Reason reason = reasonOf(entry);
    const std::string transfer = clientTransferOf(entry);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (reason.kind != Reason::Kind::None)
        m_Last[std::this_thread::get_id()] = reason;
    if (!transfer.empty())
        m_ClientTransfers[std::this_thread::get_id()] = transfer;
    listen(entry);
    write(entry);
}

void Journal::listen(const std::string& entry)
{
    if (m_Expected.empty())
        return;
    const std::string message = messageOf(entry);
    const std::string error = m_Expected + " Error : ";
    if (message == "Leave Function : " + m_Expected) {
        m_Answer.ended = true;
        m_Answered.notify_all();
    } else if (message.compare(0, error.size(), error) == 0) {
        m_Answer.errors.push_back(message.substr(error.size()));
    }
}

void Journal::expect(const std::string& word)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Expected = word;
    m_Answer = {};
}

LaterAnswer Journal::await(unsigned int timeout)
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    const auto ended = [this] { return m_Answer.ended; };
    if (timeout == 0)
        m_Answered.wait(lock, ended);
    else
        m_Answered.wait_for(lock, std::chrono::milliseconds(timeout), ended);
    m_Expected.clear();
    return m_Answer;
}

void Journal::takeStatus(int level, const std::string& line)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (level == kErrorLevel)
        m_Last[std::this_thread::get_id()] = {Reason::Kind::NoChannel, {}, line};
    if (line.find(kFailed) != std::string::npos || line.find(kDone) != std::string::npos) {
        m_ClientEnds.push_back(line);
        m_ClientEnded.notify_all();
    }
    write(line + "\r\n");
}

std::string Journal::clientTransfer() const
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto last = m_ClientTransfers.find(std::this_thread::get_id());
    return last == m_ClientTransfers.end() ? std::string() : last->second;
}

std::string Journal::clientEnd(const std::function<bool(const std::string&)>& isIt)
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    auto found = m_ClientEnds.rend();
    m_ClientEnded.wait_for(lock, std::chrono::milliseconds(500), [&] {
        found = std::find_if(m_ClientEnds.rbegin(), m_ClientEnds.rend(), isIt);
        return found != m_ClientEnds.rend();
    });
    return found == m_ClientEnds.rend() ? std::string() : *found;
}

std::string Journal::clientReason(const std::string& clientTransfer)
{
    if (clientTransfer.empty())
        return {};
    const std::string line = clientEnd([&](const std::string& end) {
        return end.find(" " + clientTransfer + " ") != std::string::npos &&
               end.find(kFailed) != std::string::npos;
    });
    return between(between(line, kFailed, "\n"), ", ", "\n");
}

std::string Journal::clientReason(int code, const std::string& name)
{
    if (code < bulkhaul::kNoConnection || code > bulkhaul::kFailedHere)
        return {}; // none of the client's
    const std::string told = "/" + name + kFailed + std::to_string(code) + ", ";
    const std::string line =
        clientEnd([&](const std::string& end) { return end.find(told) != std::string::npos; });
    if (line.empty())
        return {};
    const std::string reason = between(line, told, "\n");
    const bool named = reason.compare(0, name.size(), name) == 0;
    return between(line, " of ", named ? "/" + name + kFailed : kFailed) + (named ? "/" : ": ") + reason;
}

bool Journal::clientKept(const std::string& clientTransfer)
{
    const std::string line = clientEnd([&](const std::string& end) {
        return end.find(" " + clientTransfer + " ") != std::string::npos &&
               end.find(kDone) != std::string::npos;
    });
    return !line.empty() && between(line, kDone, " kept") != "0";
}

void Journal::write(const std::string& entry)
{
    if (m_File == nullptr || m_Lost)
        return;
    if (std::fwrite(entry.data(), 1, entry.size(), m_File) != entry.size() || std::fflush(m_File) != 0) {
        m_Lost = true;
        std::cerr << "lumo: the log is not whole: " << std::strerror(errno) << "\n";
    }
}

} // namespace cli
