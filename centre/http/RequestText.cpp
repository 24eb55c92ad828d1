#include "centre/http/RequestText.h"

#include "lumo/components/platform/Utf8.h"

#include <algorithm>
#include <cstddef>

namespace centre {

namespace {

/// The value of a hexadecimal digit, or -1.
int digit(char letter)
{
    if (letter >= '0' && letter <= '9')
        return letter - '0';
    const char lower = static_cast<char>(letter | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace

std::optional<std::string> unescaped(const std::string& text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            plain += text[i];
            continue;
        }
        const int high = text.size() - i > 2 ? digit(text[i + 1]) : -1;
        const int low = high >= 0 ? digit(text[i + 2]) : -1;
        if (low < 0)
            return std::nullopt;
        plain += static_cast<char>(high * 16 + low);
        i += 2;
    }
    const bool isText = plain.find('\0') == std::string::npos && platform::isUtf8(plain);
    return isText ? std::optional(plain) : std::nullopt;
}

std::optional<std::vector<std::string>> splitUrlPath(const std::string& path)
{
    std::vector<std::string> components;
    if (path.empty() || path[0] != '/')
        return std::nullopt;
    for (std::size_t begin = 1; begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        std::optional<std::string> component = unescaped(path.substr(begin, end - begin));
        if (!component || component->empty() || component == "." || component == ".." ||
            component->find('/') != std::string::npos)
            return std::nullopt;
        components.push_back(*std::move(component));
        begin = end + 1;
    }
    return components;
}

bool isHost(const std::string& text)
{
    const auto allowed = [](unsigned char letter) {
        return (letter >= '0' && letter <= '9') || (letter >= 'a' && letter <= 'z') ||
               (letter >= 'A' && letter <= 'Z') || letter == '.' || letter == '-' || letter == '_' ||
               letter == ':' || letter == '[' || letter == ']';
    };
    return !text.empty() && text.size() <= 255 + 6 && std::all_of(text.begin(), text.end(), allowed);
}

} // namespace centre
