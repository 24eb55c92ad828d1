#include "core/LogLine.h"

#include "lumo/components/logger/LumoLogger.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace {

constexpr std::size_t kLongestLine = 4096;
constexpr std::size_t kTimeText = 26; // what asctime_r asks for

/// The time text of the present second, made once a second per thread.
const char* timeText()
{
    thread_local std::time_t second = -1;
    thread_local char text[kTimeText];
    const std::time_t now = std::time(nullptr);
    if (now != second) {
        std::tm local;
        if (localtime_r(&now, &local) == nullptr || asctime_r(&local, text) == nullptr)
            return "";
        second = now;
    }
    return text;
}

/// Appends to the line as far as its limit allows; `length` stays within it.
void append(char* buffer, std::size_t& length, const char* format, std::va_list arguments)
{
    const int added = std::vsnprintf(buffer + length, kLongestLine + 1 - length, format, arguments);
    if (added > 0)
        length = std::min(length + static_cast<std::size_t>(added), kLongestLine);
}

__attribute__((format(printf, 3, 4))) void append(char* buffer, std::size_t& length, const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    append(buffer, length, format, arguments);
    va_end(arguments);
}

} // namespace

void writeLogLine(const char* file, const char* function, int line, const char* message, ...)
{
    char buffer[kLongestLine + 1]; // not zeroed whole: that took a fifth of the time of a line
    buffer[0] = '\0';
    std::size_t length = 0;
    append(buffer, length, "%s [INFO] ", timeText());
    std::va_list arguments;
    va_start(arguments, message);
    append(buffer, length, message, arguments);
    va_end(arguments);
    append(buffer, length, " File:%s, Func:%s, Line:%d\r\n", file, function, line);
    CLumoLogger::GetSinglePton()->write(buffer, static_cast<int>(std::strlen(buffer)));
}
