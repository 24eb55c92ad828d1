#include "cli/output/Output.h"

#include "cli/base/ExitCode.h"
#include "cli/output/DisplayText.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <limits>

#include <sys/ioctl.h>
#include <unistd.h>

namespace cli {

namespace {

[[noreturn]] void failToWrite()
{
    const int error = errno;
    throw Failure(ExitCode::Other, error == EPIPE
                                       ? std::string()
                                       : std::string("can't write the output: ") + std::strerror(error));
}

std::string dumped(const Json& document, int indent)
{
    const std::string text = document.dump(indent, ' ', false, Json::error_handler_t::replace) + "\n";
    std::string result;
    result.reserve(text.size());
    // JSON may hold DEL and the C1 controls (C2 80 to C2 9F in UTF-8) as they are; a terminal acts on them.
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
        const bool c1 = byte == 0xC2 && next >= 0x80 && next <= 0x9F;
        if (byte != 0x7F && !c1) {
            result += text[i];
            continue;
        }
        char escape[8];
        static_cast<void>(std::snprintf(escape, sizeof escape, "\\u%04x", c1 ? next : byte));
        result += escape;
        i += c1 ? 1 : 0;
    }
    return result;
}

} // namespace

std::string jsonText(const Json& document)
{
    return dumped(document, 2);
}

std::string jsonLine(const Json& document)
{
    return dumped(document, -1);
}

void print(const std::string& text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
        failToWrite();
}

void flushOutput()
{
    if (std::fflush(stdout) != 0)
        failToWrite();
}

std::size_t terminalColumns(int descriptor)
{
    winsize size = {};
    return ioctl(descriptor, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

std::size_t terminalWidth()
{
    std::size_t columns = 0;
    const char* const wanted = std::getenv("COLUMNS");
    if (wanted != nullptr)
        std::from_chars(wanted, wanted + std::strlen(wanted), columns);
    // A pager or head shows the table on the terminal that also receives the errors.
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
        columns = columns == 0 ? terminalColumns(stream) : columns;
    return columns > 1 ? columns : 80;
}

std::size_t listWidth()
{
    return isatty(STDOUT_FILENO) != 0 ? terminalWidth() : std::numeric_limits<std::size_t>::max();
}

void complain(const std::string& message)
{
    std::cerr << "lumo: " + escaped(message) + "\n";
}

} // namespace cli
