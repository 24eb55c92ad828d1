#ifndef LUMO_CLI_OUTPUT_CSV_H
#define LUMO_CLI_OUTPUT_CSV_H

#include <cstddef>
#include <string>
#include <vector>

namespace cli {

struct CsvRow
{
    std::size_t line; ///< on which it begins, from 1
    std::vector<std::string> cells;
};

/// The rows of an RFC 4180 text, its header among them; lines may end in LF alone, blank ones and a byte
/// order mark are left out. Throws Failure (WrongUse) with `name` and the line for a text of another form,
/// and for rows that have not as many cells as the first.
std::vector<CsvRow> parseCsv(const std::string& text, const std::string& name);

/// A cell of CSV, quoted where RFC 4180 asks for it.
std::string csvCell(const std::string& text);

} // namespace cli

#endif
