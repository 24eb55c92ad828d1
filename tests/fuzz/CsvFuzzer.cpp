// CSV: rows that were read, written and read again are the same rows.

#include "cli/base/ExitCode.h"
#include "cli/output/Csv.h"
#include "tests/fuzz/Require.h"

#include <cstdint>
#include <optional>

namespace {

std::optional<std::vector<cli::CsvRow>> read(const std::string& text)
{
    try {
        return cli::parseCsv(text, "name");
    } catch (const cli::Failure&) { // refused
        return std::nullopt;
    }
}

std::string quoted(const std::string& cell)
{
    std::string text = "\"";
    for (const char c : cell)
        text += c == '"' ? std::string("\"\"") : std::string(1, c);
    return text + "\"";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto rows = read({reinterpret_cast<const char*>(data), size});
    if (!rows)
        return 0;
    std::string written;
    for (const cli::CsvRow& row : *rows) {
        for (std::size_t i = 0; i < row.cells.size(); ++i)
            written += (i == 0 ? "" : ",") + quoted(row.cells[i]);
        written += "\r\n";
    }
    const auto again = read(written);
    require(again && again->size() == rows->size());
    for (std::size_t i = 0; i < rows->size(); ++i)
        require((*again)[i].cells == (*rows)[i].cells &&
                (*rows)[i].cells.size() == rows->front().cells.size());
    return 0;
}
