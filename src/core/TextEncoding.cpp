#include "lumo/core/TextEncoding.h"

#include "lumo/components/platform/CodePage.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>

namespace {

/// Bytes that `length` bytes may become at most: of a code page's characters only those of UTF-8 are
/// longer than their source, a byte that does not decode most of all.
std::size_t longestResult(unsigned int to, std::size_t length)
{
    return to == platform::kUtf8CodePage ? 3 * length : length;
}

/// Whether the eight bytes hold none that is NUL or beyond ASCII.
bool isPlain(std::uint64_t bytes)
{
    constexpr std::uint64_t kOnes = 0x0101010101010101;
    constexpr std::uint64_t kHighBits = 0x8080808080808080;
    return ((bytes | (bytes - kOnes)) & kHighBits) == 0;
}

/// Whether the text is ASCII without NUL, the same in every code page.
bool isPlain(const std::string& text)
{
    const char* at = text.data();
    std::size_t left = text.size();
    std::uint64_t block = 0;
    for (; left >= sizeof block; at += sizeof block, left -= sizeof block) {
        std::memcpy(&block, at, sizeof block);
        if (!isPlain(block))
            return false;
    }
    for (; left > 0; ++at, --left)
        if (static_cast<signed char>(*at) <= 0)
            return false;
    return true;
}

std::string convert(unsigned int from, unsigned int to, const std::string& text)
try {
    const std::size_t length = std::strlen(text.c_str());
    std::string result(longestResult(to, length), '\0');
    result.resize(platform::recode(from, to, text.data(), length, result.data(), result.size()));
    return result;
} catch (const std::bad_alloc&) {
    return {};
} catch (const std::length_error&) {
    return {};
}

} // namespace

bool convertToMultibyte(const std::string& text, char* buffer, int size)
{
    if (size < 2)
        return false;
    // The terminator and one byte more stay free.
    const std::size_t capacity = static_cast<std::size_t>(size) - 2;
    if (text.size() <= capacity && isPlain(text)) {
        std::fill(std::copy(text.begin(), text.end(), buffer), buffer + size, '\0');
        return true;
    }
    const std::size_t length = std::strlen(text.c_str());
    const unsigned int codePage = platform::systemCodePage();
    const auto recode = [&](char* to, std::size_t limit) {
        return platform::recode(platform::kUtf8CodePage, codePage, text.data(), length, to, limit);
    };
    if (longestResult(codePage, length) > capacity && recode(nullptr, 0) > capacity)
        return false;
    const std::size_t written = recode(buffer, capacity);
    std::memset(buffer + written, 0, static_cast<std::size_t>(size) - written);
    return true;
}

std::string convertToMultibyte(const std::string& text)
{
    return convert(platform::kUtf8CodePage, platform::systemCodePage(), text);
}

std::string convertToUtf8(const std::string& text)
{
    return convert(platform::systemCodePage(), platform::kUtf8CodePage, text);
}
