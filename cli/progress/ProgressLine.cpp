#include "cli/progress/ProgressLine.h"

#include "cli/output/DisplayText.h"
#include "cli/output/Output.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

#include <unistd.h>

namespace cli {

std::size_t progressColumns()
{
    const std::size_t columns = terminalColumns(STDERR_FILENO);
    return (columns > 1 ? columns : 80) - 1;
}

std::string progressLine(const std::string& head, double fraction, const std::string& figures,
                         std::size_t width)
{
    char percent[16];
    static_cast<void>(std::snprintf(percent, sizeof percent, "%3d %%", static_cast<int>(fraction * 100)));
    const std::string name = clipped(head, width / 3);
    const std::size_t room = std::min<std::size_t>(width / 4, 40);
    const auto filled = static_cast<std::size_t>(fraction * static_cast<double>(room));
    std::string bar = "[" + std::string(filled, '#') + std::string(room - filled, '.') + "] ";
    if (displayWidth(name + bar + percent + figures) + 2 > width)
        bar.clear();
    return clipped(name + "  " + bar + percent + figures, width);
}

void StatusLine::show(const std::string& line)
{
    std::cerr << "\r" + line + "\x1b[K" << std::flush;
    m_Shown = true;
}

void StatusLine::clear()
{
    if (m_Shown)
        std::cerr << "\r\x1b[K" << std::flush;
    m_Shown = false;
}

} // namespace cli
