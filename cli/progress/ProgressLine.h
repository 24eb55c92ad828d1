#ifndef LUMO_CLI_PROGRESS_PROGRESSLINE_H
#define LUMO_CLI_PROGRESS_PROGRESSLINE_H

#include <cstddef>
#include <string>

namespace cli {

/// Columns for a line at the bottom of the terminal that the errors go to.
std::size_t progressColumns();

/// A line with a name, a bar if there is room for one, the fraction that is done (0 to 1), and figures.
std::string progressLine(const std::string& head, double fraction, const std::string& figures,
                         std::size_t width);

/// A line at the bottom of that terminal, which disappears with the object.
class StatusLine
{
public:
    StatusLine() = default;
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;
    ~StatusLine() { clear(); }

    /// Replaces what it shows.
    void show(const std::string& line);
    void clear();

private:
    bool m_Shown = false;
};

} // namespace cli

#endif
