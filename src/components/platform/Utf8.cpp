#include "lumo/components/platform/Utf8.h"

#include <cstdio>

namespace platform {

namespace {

bool mustEscape(char32_t character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x2028 ||
           character == 0x2029 || character == 0x200E || character == 0x200F ||
           (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069) ||
           character == kNoCharacter;
}

std::string escapeOf(char32_t character, unsigned char byte)
{
    switch (character) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default: {
        const bool oneByte = character == kNoCharacter || character < 0x80;
        char text[16];
        static_cast<void>(std::snprintf(text, sizeof text, oneByte ? "\\x%02X" : "\\u%04X",
                                        oneByte ? byte : static_cast<unsigned int>(character)));
        return text;
    }
    }
}

} // namespace

std::string escaped(const std::string& text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t begin = position;
        const char32_t character = nextCharacter(text, position);
        if (mustEscape(character))
            result += escapeOf(character, static_cast<unsigned char>(text[begin]));
        else
            result.append(text, begin, position - begin);
    }
    return result;
}

} // namespace platform
