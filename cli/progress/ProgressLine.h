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

} // namespace cli

#endif
