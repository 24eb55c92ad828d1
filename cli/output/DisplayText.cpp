#include "cli/output/DisplayText.h"

#include "lumo/components/platform/Utf8.h"

#include <algorithm>
#include <numeric>

namespace cli {

namespace {

constexpr std::size_t kNarrowest = 8; ///< a column that is shortened

/// Shortens the widest columns until the line fits.
void narrow(std::vector<std::size_t>& widths, std::size_t line)
{
    std::size_t used = std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1));
    for (; used > line; --used) {
        std::size_t& widest = *std::max_element(widths.begin(), widths.end());
        if (widest <= kNarrowest)
            return;
        --widest;
    }
}

} // namespace

std::string clipped(const std::string& text, std::size_t columns)
{
    if (columns == 0 || displayWidth(text) <= columns)
        return columns == 0 ? std::string() : text;
    std::size_t head = 0;
    for (std::size_t end = 0; end < text.size() && displayWidth(text.substr(0, end)) <= (columns - 1) / 2;) {
        head = end;
        platform::nextCharacter(text, end);
    }
    std::size_t tail = head;
    while (displayWidth(text.substr(tail)) > columns - 1 - displayWidth(text.substr(0, head)))
        platform::nextCharacter(text, tail);
    return text.substr(0, head) + "…" + text.substr(tail);
}

Table::Table(std::vector<std::string> headings)
{
    add(std::move(headings));
}

void Table::add(std::vector<std::string> cells)
{
    for (std::string& cell : cells)
        cell = escaped(cell);
    m_Rows.push_back(std::move(cells));
}

std::string Table::text(std::size_t width) const
{
    std::vector<std::size_t> widths(m_Rows.front().size());
    for (const auto& row : m_Rows)
        for (std::size_t column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], displayWidth(row[column]));
    narrow(widths, width);
    const auto& headings = m_Rows.front();
    const bool headed =
        std::any_of(headings.begin(), headings.end(), [](const auto& h) { return !h.empty(); });
    std::string result;
    for (std::size_t index = headed ? 0 : 1; index < m_Rows.size(); ++index) {
        const auto& row = m_Rows[index];
        for (std::size_t column = 0; column + 1 < row.size(); ++column) {
            const std::string cell = clipped(row[column], widths[column]);
            result += cell;
            result.append(widths[column] - displayWidth(cell) + kGap, ' ');
        }
        result += clipped(row.back(), widths.back()) + "\n";
    }
    return result;
}

} // namespace cli
