#include "cli/output/DisplayText.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <locale.h>
#include <numeric>

namespace cli {

namespace {

constexpr char32_t kUndecodable = 0xFFFFFFFF;

/// Decodes the character at `position` and moves past it; returns kUndecodable for a byte that starts none.
char32_t nextCharacter(const std::string& text, std::size_t& position)
{
    const auto lead = static_cast<unsigned char>(text[position++]);
    if (lead < 0x80)
        return lead;
    static const struct
    {
        unsigned char first, last;
        int following;
        char32_t smallest;
    } kForms[] = {{0xC2, 0xDF, 1, 0x80}, {0xE0, 0xEF, 2, 0x800}, {0xF0, 0xF4, 3, 0x10000}};
    for (const auto& form : kForms) {
        if (lead < form.first || lead > form.last || position + form.following > text.size())
            continue;
        char32_t character = lead & (0x3F >> form.following);
        for (int i = 0; i < form.following; ++i) {
            const auto next = static_cast<unsigned char>(text[position + i]);
            if ((next & 0xC0) != 0x80)
                return kUndecodable;
            character = character << 6 | (next & 0x3F);
        }
        if (character < form.smallest || character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF))
            return kUndecodable;
        position += form.following;
        return character;
    }
    return kUndecodable;
}

bool mustEscape(char32_t character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x2028 ||
           character == 0x2029 || character == 0x200E || character == 0x200F ||
           (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069) ||
           character == kUndecodable;
}

std::string escapeOf(char32_t character, unsigned char byte)
{
    switch (character) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default: {
        char text[16];
        if (character == kUndecodable || character < 0x80) {
            static_cast<void>(std::snprintf(text, sizeof text, "\\x%02X", byte));
        } else {
            static_cast<void>(
                std::snprintf(text, sizeof text, "\\u%04X", static_cast<unsigned int>(character)));
        }
        return text;
    }
    }
}

/// Sets the thread's locale, which wcwidth uses; this one is part of the C library, so it always exists.
class Utf8Locale
{
public:
    Utf8Locale() : m_Previous(uselocale(locale())) {}
    ~Utf8Locale() { uselocale(m_Previous); }
    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;

private:
    static locale_t locale()
    {
        static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return utf8;
    }

    locale_t m_Previous;
};

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

std::string escaped(const std::string& text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t begin = position;
        const char32_t character = nextCharacter(text, position);
        if (mustEscape(character))
            result += escapeOf(character, static_cast<unsigned char>(text[begin]));
        else
            result.append(text, begin, position - begin);
    }
    return result;
}

std::size_t displayWidth(const std::string& text)
{
    const Utf8Locale locale;
    std::size_t width = 0;
    for (std::size_t position = 0; position < text.size();) {
        const int columns = wcwidth(static_cast<wchar_t>(nextCharacter(text, position)));
        width += columns < 0 ? 1 : columns;
    }
    return width;
}

std::string clipped(const std::string& text, std::size_t columns)
{
    if (columns == 0 || displayWidth(text) <= columns)
        return columns == 0 ? std::string() : text;
    std::size_t head = 0;
    for (std::size_t end = 0; end < text.size() && displayWidth(text.substr(0, end)) <= (columns - 1) / 2;) {
        head = end;
        nextCharacter(text, end);
    }
    std::size_t tail = head;
    while (displayWidth(text.substr(tail)) > columns - 1 - displayWidth(text.substr(0, head)))
        nextCharacter(text, tail);
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
