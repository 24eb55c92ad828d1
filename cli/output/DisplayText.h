#ifndef LUMO_CLI_OUTPUT_DISPLAYTEXT_H
#define LUMO_CLI_OUTPUT_DISPLAYTEXT_H

#include "lumo/components/platform/DisplayWidth.h"
#include "lumo/components/platform/Utf8.h"

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace cli {

using platform::displayWidth;
using platform::escaped;

/// The text, shortened to so many columns by "…" in place of its middle.
std::string clipped(const std::string& text, std::size_t columns);

constexpr std::size_t kGap = 2; ///< columns between two cells of a table

/// Rows of text as aligned columns. Cells are escaped; the last column is not padded.
class Table
{
public:
    explicit Table(std::vector<std::string> headings);
    /// As many cells as there are headings.
    void add(std::vector<std::string> cells);
    /// One line for the headings unless they are all empty, then one for each row. What is wider than `width`
    /// is shortened in its widest columns, as far as it can be.
    std::string text(std::size_t width = std::numeric_limits<std::size_t>::max()) const;

private:
    std::vector<std::vector<std::string>> m_Rows;
};

} // namespace cli

#endif
