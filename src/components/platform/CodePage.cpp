#include "lumo/components/platform/CodePage.h"

#include "lumo/components/platform/Utf8.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace platform {
namespace {

#include "GbkTables.inc"

constexpr char32_t kReplacement = 0xFFFD;
constexpr int kBlock = 8;
constexpr unsigned kGbkRows = 126;    // lead bytes from 0x81
constexpr unsigned kGbkColumns = 191; // trail bytes from 0x40

std::atomic<unsigned int> currentCodePage{kGbkCodePage};

template <class Integer>
Integer load(const char* from)
{
    static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the first byte is the lowest here");
    Integer value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

bool isAscii(char byte)
{
    return static_cast<unsigned char>(byte) < 0x80;
}

// A source decodes the first character of a text that is not empty. It returns U+FFFD with the length of one
// unit when the text does not begin with a character.

struct Decoded
{
    char32_t point;
    int length;
};

struct GbkSource
{
    static Decoded decode(const char* at, const char* end)
    {
        const unsigned lead = static_cast<unsigned char>(*at);
        if (lead < 0x80)
            return {lead, 1};
        if (end - at >= 2) {
            const unsigned row = lead - 0x81;
            const unsigned column = static_cast<unsigned char>(at[1]) - 0x40u;
            if (row < kGbkRows && column < kGbkColumns) {
                const char32_t point = kGbkPairToUnit[row * kGbkColumns + column];
                if (point != kReplacement)
                    return {point, 2};
            }
        }
        return {kGbkByteToUnit[lead], 1};
    }
};

struct Utf8Source
{
    static Decoded decode(const char* at, const char* end)
    {
        if (isAscii(*at))
            return {static_cast<unsigned char>(*at), 1};
        // Nearly every character that is not ASCII has three bytes here.
        if (end - at >= 3) {
            const unsigned bytes = load<std::uint16_t>(at) | static_cast<unsigned char>(at[2]) << 16;
            const char32_t point = (bytes & 0x0F) << 12 | (bytes >> 2 & 0xFC0) | (bytes >> 16 & 0x3F);
            const bool overlongOrSurrogate = point - 0x800 >= 0xD800 - 0x800 && point - 0xE000 >= 0x2000;
            if ((bytes & 0xC0C0F0) == 0x8080E0 && !overlongOrSurrogate)
                return {point, 3};
        }
        return decodeRare(at, end);
    }

private:
    __attribute__((noinline)) static Decoded decodeRare(const char* at, const char* end)
    {
        const auto* const bytes = reinterpret_cast<const unsigned char*>(at);
        const unsigned lead = bytes[0];
        const int length = lead < 0xE0 ? 2 : 4;
        if (lead < 0xC0 || (lead & 0xF0) == 0xE0 || lead >= 0xF8 || end - at < length)
            return {kReplacement, 1};
        char32_t point = lead & (0x7Fu >> length);
        for (int i = 1; i < length; ++i) {
            if ((bytes[i] & 0xC0) != 0x80)
                return {kReplacement, 1};
            point = point << 6 | (bytes[i] & 0x3F);
        }
        const bool valid = length == 2 ? point >= 0x80 : point >= 0x10000 && point <= 0x10FFFF;
        return valid ? Decoded{point, length} : Decoded{kReplacement, 1};
    }
};

struct Utf16Source
{
    static Decoded decode(const char16_t* at, const char16_t* end)
    {
        const char32_t unit = at[0];
        if ((unit & 0xF800) != 0xD800)
            return {unit, 1};
        if (unit >= 0xDC00 || end - at < 2 || (at[1] & 0xFC00) != 0xDC00)
            return {kReplacement, 1};
        return {0x10000 + ((unit & 0x3FF) << 10) + (at[1] & 0x3FF), 2};
    }
};

// A sink encodes a code point into at most kWidest units and returns how many.

struct GbkSink
{
    static constexpr int kWidest = 2;

    static int encode(char32_t point, char* to)
    {
        // A code point above U+FFFF has two UTF-16 units, and GBK has neither.
        const unsigned code = point <= 0xFFFF ? kUnitToGbk[point] : ('?' << 8 | '?');
        if (code <= 0xFF) {
            to[0] = static_cast<char>(code);
            return 1;
        }
        to[0] = static_cast<char>(code >> 8);
        to[1] = static_cast<char>(code);
        return 2;
    }
};

struct Utf8Sink
{
    static constexpr int kWidest = 4;

    static int encode(char32_t point, char* to)
    {
        const int length = point < 0x80 ? 1 : point < 0x800 ? 2 : point < 0x10000 ? 3 : 4;
        for (int i = length - 1; i > 0; --i, point >>= 6)
            to[i] = static_cast<char>(0x80 | (point & 0x3F));
        constexpr unsigned char kLead[] = {0, 0, 0xC0, 0xE0, 0xF0};
        to[0] = static_cast<char>(kLead[length] | point);
        return length;
    }
};

struct Utf16Sink
{
    static constexpr int kWidest = 2;

    static int encode(char32_t point, char16_t* to)
    {
        if (point <= 0xFFFF) {
            to[0] = static_cast<char16_t>(point);
            return 1;
        }
        to[0] = static_cast<char16_t>(0xD7C0 + (point >> 10));
        to[1] = static_cast<char16_t>(0xDC00 | (point & 0x3FF));
        return 2;
    }
};

/// Copies blocks of eight bytes up to the first byte that is not ASCII, and moves both pointers after what it
/// copied. The bytes that it writes beyond that are overwritten next, or remain after the result.
void copyAscii(const char*& from, const char* end, char*& to, const char* limit)
{
    while (end - from >= kBlock && limit - to >= kBlock) {
        const auto block = load<std::uint64_t>(from);
        std::memcpy(to, &block, kBlock);
        const std::uint64_t others = block & 0x8080808080808080;
        const int count = others == 0 ? kBlock : __builtin_ctzll(others) / 8;
        from += count;
        to += count;
        if (others != 0)
            return;
    }
}

/// Recodes from UTF-8 to GBK as long as the next two characters have three bytes each and two in GBK. One
/// word has both, 24 bits apart, so that each step works on the two.
void recodePairs(const char*& from, const char* end, char*& to, const char* limit)
{
    while (end - from >= 8 && limit - to >= 4) {
        const auto bytes = load<std::uint64_t>(from);
        if ((bytes & 0xC0C0F0C0C0F0) != 0x8080E08080E0)
            return;
        const std::uint64_t points =
            (bytes & 0x0F00000F) << 12 | (bytes >> 2 & 0xFC0000FC0) | (bytes >> 16 & 0x3F00003F);
        const auto first = static_cast<unsigned>(points & 0xFFFF);
        const auto second = static_cast<unsigned>(points >> 24);
        // Neither overlong nor a surrogate; characters above the surrogates are left to the caller.
        if (first - 0x800 >= 0xD000 || second - 0x800 >= 0xD000)
            return;
        const unsigned firstCode = kUnitToGbk[first], secondCode = kUnitToGbk[second];
        if (firstCode <= 0xFF || secondCode <= 0xFF)
            return;
        const std::uint32_t codes = __builtin_bswap32(firstCode << 16 | secondCode);
        std::memcpy(to, &codes, sizeof codes);
        from += 6;
        to += 4;
    }
}

/// Converts near the end of the target, each character through a buffer. After the first one that does not
/// fit, the rest is only counted.
template <class Source, class Sink, class From, class To>
std::size_t convertTail(const From* from, const From* end, To* to, To* limit)
{
    std::size_t total = 0;
    while (from != end) {
        const Decoded decoded = Source::decode(from, end);
        from += decoded.length;
        To encoded[Sink::kWidest];
        const int length = Sink::encode(decoded.point, encoded);
        total += static_cast<std::size_t>(length);
        if (limit - to < length)
            limit = to;
        else
            to = std::copy_n(encoded, length, to);
    }
    return total;
}

template <class Source, class Sink, class From, class To>
std::size_t convert(const From* from, std::size_t fromLength, To* to, std::size_t capacity)
{
    const From* const end = from + fromLength;
    To* const start = to;
    To* const limit = to + capacity;
    while (from != end && limit - to >= Sink::kWidest) {
        if constexpr (sizeof(From) == 1 && sizeof(To) == 1) {
            if (isAscii(*from) && end - from >= kBlock && limit - to >= kBlock) {
                copyAscii(from, end, to, limit);
                continue;
            }
        }
        if constexpr (std::is_same_v<Source, Utf8Source> && std::is_same_v<Sink, GbkSink>) {
            recodePairs(from, end, to, limit);
            if (from == end || limit - to < Sink::kWidest)
                break;
        }
        const Decoded decoded = Source::decode(from, end);
        from += decoded.length;
        to += Sink::encode(decoded.point, to);
    }
    return static_cast<std::size_t>(to - start) + convertTail<Source, Sink>(from, end, to, limit);
}

template <class Source>
std::size_t recodeFrom(unsigned int to, const char* text, std::size_t length, char* result,
                       std::size_t capacity)
{
    switch (to) {
    case kGbkCodePage:
        return convert<Source, GbkSink>(text, length, result, capacity);
    case kUtf8CodePage:
        return convert<Source, Utf8Sink>(text, length, result, capacity);
    default:
        return 0;
    }
}

} // namespace

unsigned int systemCodePage()
{
    return currentCodePage.load(std::memory_order_relaxed);
}

bool setSystemCodePage(unsigned int codePage)
{
    if (codePage != kGbkCodePage && codePage != kUtf8CodePage)
        return false;
    currentCodePage.store(codePage, std::memory_order_relaxed);
    return true;
}

std::size_t toUtf16(unsigned int codePage, const char* text, std::size_t length, char16_t* units,
                    std::size_t capacity)
{
    switch (codePage) {
    case kGbkCodePage:
        return convert<GbkSource, Utf16Sink>(text, length, units, capacity);
    case kUtf8CodePage:
        return convert<Utf8Source, Utf16Sink>(text, length, units, capacity);
    default:
        return 0;
    }
}

std::size_t fromUtf16(unsigned int codePage, const char16_t* units, std::size_t length, char* text,
                      std::size_t capacity)
{
    switch (codePage) {
    case kGbkCodePage:
        return convert<Utf16Source, GbkSink>(units, length, text, capacity);
    case kUtf8CodePage:
        return convert<Utf16Source, Utf8Sink>(units, length, text, capacity);
    default:
        return 0;
    }
}

std::size_t recode(unsigned int from, unsigned int to, const char* text, std::size_t length, char* result,
                   std::size_t capacity)
{
    switch (from) {
    case kGbkCodePage:
        return recodeFrom<GbkSource>(to, text, length, result, capacity);
    case kUtf8CodePage:
        return recodeFrom<Utf8Source>(to, text, length, result, capacity);
    default:
        return 0;
    }
}

char32_t nextCharacter(const std::string& text, std::size_t& position)
{
    const Decoded decoded = Utf8Source::decode(text.data() + position, text.data() + text.size());
    position += static_cast<std::size_t>(decoded.length);
    // U+FFFD itself has three bytes.
    return decoded.point == kReplacement && decoded.length == 1 ? kNoCharacter : decoded.point;
}

bool isUtf8(const std::string& text)
{
    for (std::size_t position = 0; position < text.size();)
        if (nextCharacter(text, position) == kNoCharacter)
            return false;
    return true;
}

} // namespace platform
