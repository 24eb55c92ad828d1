#include "catalog/NumberText.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <locale.h>

namespace numbertext {

namespace {

/// Reads `text` from its first byte. False where strtod and its kin know more: leading blanks, a plus sign,
/// hexadecimal digits, a number that is out of range.
template <class Number>
bool readPlain(const std::string& text, Number& number)
{
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc() && (read.ptr == end || (*read.ptr != 'x' && *read.ptr != 'X'));
}

} // namespace

double number(const std::string& text)
{
    double value = 0;
    if (readPlain(text, value))
        return value;
    static const locale_t neutral = newlocale(LC_ALL_MASK, "C", nullptr); // used for good
    return strtod_l(text.c_str(), nullptr, neutral);
}

int count(const std::string& text)
{
    int value = 0;
    if (readPlain(text, value))
        return value;
    const long wide = std::strtol(text.c_str(), nullptr, 10);
    return static_cast<int>(
        std::clamp<long>(wide, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

} // namespace numbertext
