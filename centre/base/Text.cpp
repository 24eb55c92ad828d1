#include "centre/base/Text.h"

#include "centre/base/Error.h"

#include <charconv>
#include <iterator>

namespace centre {

std::string abbreviated(const std::string& text)
{
    constexpr std::size_t kLongest = 200;
    return escaped(text.substr(0, kLongest)) + (text.size() > kLongest ? "..." : "");
}

void requireShort(const std::string& text, const std::string& what)
{
    if (text.size() > kLongestText)
        throw refusal(what + " may have " + std::to_string(kLongestText) + " bytes, not " +
                      std::to_string(text.size()));
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
