#include "centre/base/Text.h"

#include <charconv>
#include <iterator>

namespace centre {

std::string abbreviated(const std::string& text)
{
    constexpr std::size_t kLongest = 200;
    return escaped(text.substr(0, kLongest)) + (text.size() > kLongest ? "..." : "");
}

std::string counted(std::uint64_t count, const std::string& noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string numberText(double value)
{
    char digits[32];
    return {std::begin(digits), std::to_chars(std::begin(digits), std::end(digits), value).ptr};
}

} // namespace centre
