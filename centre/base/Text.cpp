#include "centre/base/Text.h"

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

} // namespace centre
