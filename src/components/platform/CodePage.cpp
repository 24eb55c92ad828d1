#include "components/platform/CodePage.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <type_traits>

namespace platform {
namespace {

#include "GbkTables.inc"

constexpr char32_t kReplacement = 0xFFFD;
constexpr int kBlock = 8;

std::atomic<unsigned int> currentCodePage{kGbkCodePage};

// A source hands out one code point at a time: U+FFFD for one unit that does not decode.

struct GbkSource
{
    using Unit = char;
    const char* at;
    const char* end;

    char32_t next()
    {
        const unsigned lead = static_cast<unsigned char>(*at++);
        if (at == end)
            return kGbkByteToUnit[lead];
        const unsigned row = lead - 0x81;
        const unsigned column = static_cast<unsigned char>(*at) - 0x40u;
        if (row >= 126 || column >= 191)
            return kGbkByteToUnit[lead];
        const char32_t decoded = kGbkPairToUnit[row * 191 + column];
        at += decoded != kReplacement;
        return decoded;
    }
};

struct Utf8Source
{
    using Unit = char;
    const char* at;
    const char* end;

    unsigned byte(int index) const { return static_cast<unsigned char>(at[index]); }
    bool continues(int index) const { return (byte(index) & 0xC0) == 0x80; }

    char32_t take(int length, char32_t decoded)
    {
        at += length;
        return decoded;
    }

    char32_t next()
    {
        const unsigned lead = byte(0);
        const std::ptrdiff_t left = end - at;
        if (lead < 0x80)
            return take(1, lead);
        if ((lead & 0xF0) == 0xE0 && left >= 3 && continues(1) && continues(2)) {
            const char32_t decoded = (lead & 0x0F) << 12 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F);
            if (decoded >= 0x800 && (decoded & 0xF800) != 0xD800)
                return take(3, decoded);
        } else if (lead >= 0xC2 && lead <= 0xDF && left >= 2 && continues(1)) {
            return take(2, (lead & 0x1F) << 6 | (byte(1) & 0x3F));
        } else if ((lead & 0xF8) == 0xF0 && left >= 4 && continues(1) && continues(2) && continues(3)) {
            const char32_t decoded =
                (lead & 0x07) << 18 | (byte(1) & 0x3F) << 12 | (byte(2) & 0x3F) << 6 | (byte(3) & 0x3F);
            if (decoded >= 0x10000 && decoded <= 0x10FFFF)
                return take(4, decoded);
        }
        return take(1, kReplacement);
    }
};

struct Utf16Source
{
    using Unit = char16_t;
    const char16_t* at;
    const char16_t* end;

    char32_t next()
    {
        const char32_t unit = *at++;
        if ((unit & 0xF800) != 0xD800)
            return unit;
        if (unit >= 0xDC00 || at == end || (*at & 0xFC00) != 0xDC00)
            return kReplacement;
        return 0x10000 + ((unit & 0x3FF) << 10) + (*at++ & 0x3FF);
    }
};

// A sink encodes a code point into at most kWidest units and tells how many.

struct GbkSink
{
    using Unit = char;
    static constexpr int kWidest = 2;

    static int encode(char32_t point, char* to)
    {
        // Beyond U+FFFF there are two UTF-16 units, and GBK has neither.
        const unsigned code = point <= 0xFFFF ? kUnitToGbk[point] : ('?' << 8 | '?');
        const int length = code > 0xFF ? 2 : 1;
        to[0] = static_cast<char>(code >> (8 * (length - 1)));
        to[length - 1] = static_cast<char>(code);
        return length;
    }
};

struct Utf8Sink
{
    using Unit = char;
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
    using Unit = char16_t;
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

/// Copies the next eight units when all are ASCII, which every code page here has in common.
template <class Unit, class To>
bool copyAsciiBlock(const Unit* from, To* to)
{
    unsigned seen = 0;
    for (int i = 0; i < kBlock; ++i)
        seen |= static_cast<std::make_unsigned_t<Unit>>(from[i]);
    if (seen >= 0x80)
        return false;
    for (int i = 0; i < kBlock; ++i)
        to[i] = static_cast<To>(from[i]);
    return true;
}

/// Near the end of the target each character goes through a buffer; after the first one that does
/// not fit the rest is only counted.
template <class Source, class Sink>
std::size_t convertTail(Source source, typename Sink::Unit* to, typename Sink::Unit* limit)
{
    std::size_t total = 0;
    while (source.at != source.end) {
        typename Sink::Unit encoded[Sink::kWidest];
        const int length = Sink::encode(source.next(), encoded);
        total += static_cast<std::size_t>(length);
        if (limit - to < length)
            limit = to;
        else
            to = std::copy_n(encoded, length, to);
    }
    return total;
}

template <class Source, class Sink>
std::size_t convert(const typename Source::Unit* from, std::size_t length, typename Sink::Unit* to,
                    std::size_t capacity)
{
    Source source{from, from + length};
    auto* const start = to;
    auto* const limit = to + capacity;
    while (source.at != source.end && limit - to >= Sink::kWidest) {
        if (source.end - source.at >= kBlock && limit - to >= kBlock && copyAsciiBlock(source.at, to)) {
            source.at += kBlock;
            to += kBlock;
        } else {
            to += Sink::encode(source.next(), to);
        }
    }
    return static_cast<std::size_t>(to - start) + convertTail<Source, Sink>(source, to, limit);
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

} // namespace platform
