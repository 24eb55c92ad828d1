#include "catalog/NumberText.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <locale.h>

namespace numbertext {

namespace {

constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
constexpr std::size_t kExactDigits = std::size(kPowersOfTen) - 1; ///< that a double holds without rounding

/// Reads a whole text such as -116.391275: its digits make an exact integer and their quotient by an exact
/// power of ten is rounded once, so the result is the nearest double. False for any other text.
bool readShortDecimal(const std::string& text, double& number)
{
    const char* at = text.data();
    const char* const end = at + text.size();
    const bool negative = at != end && *at == '-';
    if (negative)
        ++at;
    if (at == end || static_cast<std::size_t>(end - at) > kExactDigits)
        return false;
    const char* const first = at;
    std::int64_t digits = 0;
    const char* point = nullptr;
    for (; at != end; ++at) {
        const unsigned int digit = static_cast<unsigned char>(*at) - static_cast<unsigned int>('0');
        if (digit <= 9)
            digits = digits * 10 + digit;
        else if (*at == '.' && !point)
            point = at;
        else
            return false;
    }
    if (point == first && end - first == 1)
        return false; // a point alone
    const double value = static_cast<double>(digits) / kPowersOfTen[point ? end - point - 1 : 0];
    number = negative ? -value : value;
    return true;
}

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
    if (readShortDecimal(text, value) || readPlain(text, value))
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
