#include "centre/base/Text.h"

#include <unicode/utf8.h>

#include <cstdint>

namespace centre {

namespace {

constexpr UChar32 kFirstPrintableAfterAscii = 0xA0;

bool isPrintable(UChar32 character)
{
    return (character >= ' ' && character < 0x7F) || character >= kFirstPrintableAfterAscii;
}

} // namespace

std::string escaped(const std::string& text)
{
    static const char kDigits[] = "0123456789abcdef";
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int64_t>(text.size());
    std::string result;
    for (std::int64_t i = 0; i < length;) {
        const std::int64_t start = i;
        UChar32 character = 0;
        U8_NEXT(bytes, i, length, character);
        if (isPrintable(character)) {
            result.append(text, start, i - start);
            continue;
        }
        for (std::int64_t k = start; k < i; ++k)
            result.append({'\\', 'x', kDigits[bytes[k] >> 4], kDigits[bytes[k] & 15]});
    }
    return result;
}

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
