#include "centre/base/Date.h"

#include <QDate>

#include <algorithm>

namespace centre {

std::optional<std::string> isoDate(const std::string& text)
{
    constexpr std::size_t kDigits = 8;
    std::string digits = text;
    if (text.size() == kDigits + 2 && (text[4] == '-' || text[4] == '/') && text[7] == text[4])
        digits = text.substr(0, 4) + text.substr(5, 2) + text.substr(8, 2);
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (digits.size() != kDigits || !std::all_of(digits.begin(), digits.end(), isDigit))
        return std::nullopt;
    const auto number = [&digits](std::size_t start, std::size_t length) {
        int value = 0;
        for (std::size_t i = start; i < start + length; ++i)
            value = value * 10 + (digits[i] - '0');
        return value;
    };
    if (!QDate::isValid(number(0, 4), number(4, 2), number(6, 2)))
        return std::nullopt;
    return digits.substr(0, 4) + "-" + digits.substr(4, 2) + "-" + digits.substr(6, 2);
}

} // namespace centre
