#include "centre/stac/JsonText.h"

#include <algorithm>
#include <cstddef>

namespace centre {

namespace {

bool isPlain(char character)
{
    return character >= ' ' && character <= '~' && character != '"' && character != '\\';
}

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

/// Moves past digits. Returns whether there was one.
bool skipDigits(std::string_view text, std::size_t& at)
{
    const std::size_t start = at;
    while (at < text.size() && isDigit(text[at]))
        ++at;
    return at > start;
}

} // namespace

void appendQuoted(std::string& json, std::string_view text)
{
    if (!std::all_of(text.begin(), text.end(), isPlain)) {
        json += textOf(std::string(text));
        return;
    }
    json += '"';
    json += text;
    json += '"';
}

bool isJsonNumber(std::string_view text)
{
    std::size_t at = 0;
    if (at < text.size() && text[at] == '-')
        ++at;
    const std::size_t first = at;
    if (!skipDigits(text, at) || (text[first] == '0' && at - first > 1))
        return false;
    if (at < text.size() && text[at] == '.' && !skipDigits(text, ++at))
        return false;
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        ++at;
        if (at < text.size() && (text[at] == '+' || text[at] == '-'))
            ++at;
        if (!skipDigits(text, at))
            return false;
    }
    return at == text.size();
}

void appendNumberOrText(std::string& json, std::string_view text)
{
    if (isJsonNumber(text))
        json += text;
    else
        appendQuoted(json, text);
}

std::string textOf(const nlohmann::json& document)
{
    return document.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace centre
