#include "cli/progress/RegisterReport.h"

#include "cli/output/DisplayText.h"
#include "cli/output/Output.h"
#include "cli/progress/Measure.h"

#include <iostream>

#include <unistd.h>

namespace cli {

RegisterReport::RegisterReport(std::string source, std::size_t records, bool json)
    : m_Source(std::move(source)), m_Records(records), m_Json(json), m_Terminal(isatty(STDERR_FILENO) != 0)
{
}

void RegisterReport::registered(std::size_t line, unsigned int id)
{
    ++m_Registered;
    m_Line.clear();
    print(m_Json ? jsonLine({{"event", "registered"}, {"line", line}, {"id", id}})
                 : std::to_string(id) + "\n");
}

void RegisterReport::failed(std::size_t line, const std::string& reason)
{
    ++m_Failed;
    m_Line.clear();
    complain(m_Source + ":" + std::to_string(line) + ": " + reason);
    if (m_Json)
        print(jsonLine({{"event", "failed"}, {"line", line}, {"message", reason}}));
}

void RegisterReport::refresh()
{
    const std::size_t done = m_Registered + m_Failed;
    flushOutput();
    if (m_Json) {
        print(jsonLine({{"event", "progress"}, {"registered", m_Registered}, {"failed", m_Failed}}));
        flushOutput();
    } else if (m_Terminal && done < m_Records) {
        const double fraction = static_cast<double>(done) / static_cast<double>(m_Records);
        std::string figures = "  " + std::to_string(done) + " of " + std::to_string(m_Records);
        figures += (m_Failed > 0 ? "  " + std::to_string(m_Failed) + " failed" : "") + "  " +
                   clockText(seconds() / fraction * (1 - fraction)) + " left";
        m_Line.show(progressLine(escaped(m_Source), fraction, figures, progressColumns()));
    } else if (!m_Terminal && done < m_Records && done * 10 / m_Records > m_Tenths) {
        m_Tenths = done * 10 / m_Records;
        std::cerr << escaped(m_Source) + ": " + std::to_string(m_Tenths * 10) + " %\n";
    }
}

void RegisterReport::finish(bool interrupted)
{
    m_Line.clear();
    if (m_Json) {
        print(jsonLine({{"event", interrupted ? "interrupted" : "finished"},
                        {"registered", m_Registered},
                        {"failed", m_Failed},
                        {"seconds", seconds()}}));
    }
}

double RegisterReport::seconds() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_Begin).count();
}

} // namespace cli
