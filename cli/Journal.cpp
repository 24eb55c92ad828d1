#include "cli/Journal.h"

#include "cli/ExitCode.h"

#include "components/hubline/Hubline.h"
#include "components/logger/LumoLogger.h"
#include "core/TextEncoding.h"

#include <cerrno>
#include <cstring>
#include <iostream>

namespace cli {

namespace {

constexpr int kErrorLevel = 2; // of hubline's lines

} // namespace

Reason reasonOf(const std::string& entry)
{
    static const std::string kLevel = " [INFO] ";
    static const std::string kError = "Error : ";
    const std::size_t level = entry.find(kLevel);
    if (level == std::string::npos) {
        return {};
    }
    const std::size_t begin = level + kLevel.size();
    // An entry that was cut at its limit has lost its end.
    const std::size_t end = std::min(entry.rfind(" File:"), entry.size());
    const std::string message = end > begin ? entry.substr(begin, end - begin) : std::string();
    const std::size_t blank = message.find(' ');
    if (blank == std::string::npos) {
        return {};
    }
    Reason reason;
    const std::string rest = message.substr(blank + 1);
    if (rest.compare(0, kError.size(), kError) == 0) {
        reason.kind = Reason::Kind::CallFailed;
        reason.text = convertToUtf8(rest.substr(kError.size()));
    } else if (rest == "Result Error") {
        reason.kind = Reason::Kind::ErrorResult;
    } else if (rest == "Result NULL") {
        reason.kind = Reason::Kind::NullResult;
    } else {
        return {};
    }
    reason.operation = message.substr(0, blank);
    return reason;
}

Journal::Journal(const std::string& path)
{
    if (!path.empty()) {
        m_File = std::fopen(path.c_str(), "ae");
        if (m_File == nullptr) {
            throw Failure(ExitCode::WrongUse,
                          "can't write the log file '" + path + "': " + std::strerror(errno));
        }
    }
    CLumoLogger::GetSinglePton()->toCallback([this](const char* text, int length) {
        const std::string entry(text, static_cast<std::size_t>(length));
        take(reasonOf(entry), entry);
    });
    hubline::Logger::Instance(true)->toCallback([this](int level, const std::string& text) {
        const auto kind = level == kErrorLevel ? Reason::Kind::NoChannel : Reason::Kind::None;
        take({kind, {}, text}, text + "\r\n");
    });
}

Journal::~Journal()
{
    hubline::Logger::Instance(true)->toCallback({});
    CLumoLogger::GetSinglePton()->toCallback({});
    if (m_File != nullptr) {
        static_cast<void>(std::fclose(m_File));
    }
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

void Journal::take(const Reason& reason, const std::string& entry)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (reason.kind != Reason::Kind::None) {
        m_Last[std::this_thread::get_id()] = reason;
    }
    write(entry);
}

void Journal::write(const std::string& entry)
{
    if (m_File == nullptr || m_Lost) {
        return;
    }
    if (std::fwrite(entry.data(), 1, entry.size(), m_File) != entry.size() || std::fflush(m_File) != 0) {
        m_Lost = true;
        std::cerr << "lumo: the log is not whole: " << std::strerror(errno) << "\n";
    }
}

} // namespace cli
