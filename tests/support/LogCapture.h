#ifndef LUMO_TESTS_SUPPORT_LOGCAPTURE_H
#define LUMO_TESTS_SUPPORT_LOGCAPTURE_H

#include "lumo/components/logger/LumoLogger.h"
#include "tests/support/Awaited.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <string>
#include <vector>

/// Takes the log lines while it lives. Of each, the time text is checked and written as TIME, the
/// line number as N; the rest is as it was written.
class LogCapture
{
public:
    LogCapture()
    {
        CLumoLogger::GetSinglePton()->toCallback([this](const char* text, int length) {
            m_Lines.change([&](auto& lines) { lines.emplace_back(text, length); });
        });
    }
    ~LogCapture() { CLumoLogger::GetSinglePton()->toCallback(CLumoLogger::Callback()); }

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<std::string> lines() const
    {
        static const std::regex form("[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9]\\d \\d\\d:\\d\\d:\\d\\d \\d{4}\n"
                                     "([^]* Line:)\\d+\r\n");
        std::vector<std::string> masked;
        for (const std::string& line : m_Lines.value()) {
            std::smatch match;
            EXPECT_TRUE(std::regex_match(line, match, form)) << line;
            masked.push_back("TIME\n" + match[1].str() + "N\r\n");
        }
        return masked;
    }

    std::vector<std::string> rawLines() const { return m_Lines.value(); }
    void clear() { m_Lines.exchange({}); }

    /// Waits until so many lines have `part` in them.
    void waitFor(const std::string& part, long number)
    {
        m_Lines.wait([&](const auto& lines) {
            return std::count_if(lines.begin(), lines.end(), [&](const std::string& line) {
                       return line.find(part) != std::string::npos;
                   }) >= number;
        });
    }

private:
    Awaited<std::vector<std::string>> m_Lines;
};

/// A whole line of a manager's method, as LogCapture gives it.
inline std::string managerLine(const std::string& message, const std::string& method)
{
    return "TIME\n [INFO] " + message + " File:LumoDataMgr, Func:CLumoDataMgr::" + method + ", Line:N\r\n";
}

/// All lines of a method: those of entering and leaving it, by the name that they have, and those between.
inline std::vector<std::string> framedLines(const std::string& method, const std::string& logged,
                                            const std::vector<std::string>& between = {})
{
    std::vector<std::string> lines{managerLine("Enter Function : " + logged, method)};
    for (const std::string& message : between)
        lines.push_back(managerLine(message, method));
    lines.push_back(managerLine("Leave Function : " + logged, method));
    return lines;
}

#endif
