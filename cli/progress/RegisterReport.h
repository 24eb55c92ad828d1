#ifndef LUMO_CLI_PROGRESS_REGISTERREPORT_H
#define LUMO_CLI_PROGRESS_REGISTERREPORT_H

#include "cli/progress/ProgressLine.h"

#include <chrono>
#include <cstddef>
#include <string>

namespace cli {

/// Prints the progress of the registration of a file: the new identifiers on standard output, a line each;
/// failures on standard error; a bar on a terminal or a line for every tenth. With `json` it prints events
/// for a program.
class RegisterReport
{
public:
    RegisterReport(std::string source, std::size_t records, bool json);

    void registered(std::size_t line, unsigned int id);
    void failed(std::size_t line, const std::string& reason);
    /// Shows the progress.
    void refresh();
    /// Ends the report, of the whole file or of the part that was sent before an interrupt.
    void finish(bool interrupted);

    std::size_t registeredRecords() const { return m_Registered; }
    std::size_t failedRecords() const { return m_Failed; }

private:
    double seconds() const;

    const std::string m_Source;
    const std::size_t m_Records;
    const bool m_Json;
    const bool m_Terminal;
    const std::chrono::steady_clock::time_point m_Begin = std::chrono::steady_clock::now();
    std::size_t m_Registered = 0;
    std::size_t m_Failed = 0;
    std::size_t m_Tenths = 0;
    StatusLine m_Line;
};

} // namespace cli

#endif
