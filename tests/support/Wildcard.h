#ifndef LUMO_TESTS_SUPPORT_WILDCARD_H
#define LUMO_TESTS_SUPPORT_WILDCARD_H

#include <gmock/gmock.h>

#include <string>

/// Whether a text is as expected, where "..." is for any characters.
inline bool fits(const std::string& text, const std::string& expected)
{
    const std::string any = "...";
    std::size_t end = expected.find(any);
    if (end == std::string::npos)
        return text == expected;
    if (text.compare(0, end, expected, 0, end) != 0)
        return false;
    std::size_t place = end;
    for (std::size_t begin = end + any.size();; begin = end + any.size()) {
        end = expected.find(any, begin);
        const std::string piece = expected.substr(begin, end - begin);
        if (end == std::string::npos)
            return text.size() >= place + piece.size() &&
                   text.compare(text.size() - piece.size(), piece.size(), piece) == 0;
        place = text.find(piece, place);
        if (place == std::string::npos)
            return false;
        place += piece.size();
    }
}

MATCHER_P(Fits, expected, "is \"" + expected + "\"")
{
    return fits(arg, expected);
}

#endif
