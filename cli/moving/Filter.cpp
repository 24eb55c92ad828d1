#include "cli/moving/Filter.h"

#include "cli/base/ExitCode.h"
#include "cli/base/LocalFiles.h"

#include <algorithm>

namespace cli {

namespace {

/// Whether the set at `pattern`, after its "[", has the character. Moves `pattern` after its "]"; returns
/// none of the set for one without an end.
bool inSet(const char*& pattern, char character)
{
    const bool negated = *pattern == '!' || *pattern == '^';
    if (negated)
        ++pattern;
    bool found = false;
    for (bool first = true; *pattern != '\0' && (first || *pattern != ']'); first = false) {
        const char low = *pattern++;
        const bool range = pattern[0] == '-' && pattern[1] != '\0' && pattern[1] != ']';
        const char high = range ? pattern[1] : low;
        pattern += range ? 2 : 0;
        found = found || (low <= character && character <= high);
    }
    if (*pattern == ']')
        ++pattern;
    return found != negated;
}

bool matches(const char* pattern, const char* text)
{
    for (; *pattern != '\0'; ++text) {
        if (*pattern == '*') {
            const bool everything = pattern[1] == '*';
            const char* const rest = pattern + (everything ? 2 : 1);
            if (everything && *rest == '\0')
                return true;
            if (everything && *rest == '/' && matches(rest + 1, text)) // "**/" is also nothing
                return true;
            for (;; ++text) {
                if (matches(rest, text))
                    return true;
                if (*text == '\0' || (*text == '/' && !everything))
                    return false;
            }
        }
        if (*text == '\0')
            return false;
        if (*pattern == '?' && *text != '/') {
            ++pattern;
        } else if (*pattern == '[' && *text != '/') {
            if (!inSet(++pattern, *text))
                return false;
        } else if (*pattern++ != *text) {
            return false;
        }
    }
    return *text == '\0';
}

/// A pattern for a folder with all below it, "old/" or "old/**", as one for the folder; others are empty.
std::string folderPattern(const std::string& pattern)
{
    for (const std::string ending : {"/**", "/"})
        if (pattern.size() > ending.size() &&
            pattern.compare(pattern.size() - ending.size(), ending.size(), ending) == 0)
            return pattern.substr(0, pattern.size() - ending.size());
    return {};
}

bool matchesFolder(const std::string& pattern, const std::string& path)
{
    const std::string folder = folderPattern(pattern);
    return matchesGlob(folder.empty() ? pattern : folder, path);
}

} // namespace

bool matchesGlob(const std::string& pattern, const std::string& path)
{
    if (!pattern.empty() && pattern.front() == '/')
        return matches(pattern.c_str() + 1, path.c_str());
    for (std::size_t begin = 0;; ++begin) {
        if (matches(pattern.c_str(), path.c_str() + begin))
            return true;
        begin = path.find('/', begin);
        if (begin == std::string::npos)
            return false;
    }
}

void Filter::include(const std::string& pattern)
{
    m_Includes.push_back(pattern);
}

void Filter::exclude(const std::string& pattern)
{
    m_Excludes.push_back(pattern);
}

void Filter::read(const std::string& file)
{
    std::ifstream lines = openedFile(file, "the filter file '" + file + "'");
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        while (!line.empty() && (line.back() == '\r' || line.back() == ' '))
            line.pop_back();
        if (line.empty() || line.front() == '#')
            continue;
        if (line.size() < 3 || (line[0] != '+' && line[0] != '-') || line[1] != ' ')
            refuse(file + ":" + std::to_string(number) + ": write '+ PATTERN' or '- PATTERN'");
        m_Rules.push_back({line[0] == '+', line.substr(2)});
    }
}

bool Filter::isEmpty() const
{
    return m_Rules.empty() && m_Includes.empty() && m_Excludes.empty() && minimum == 0 &&
           newerThan == std::numeric_limits<std::int64_t>::min();
}

bool Filter::admitsFolder(const std::string& path) const
{
    for (const Rule& rule : m_Rules)
        if (matchesFolder(rule.pattern, path))
            return rule.includes;
    return std::none_of(m_Excludes.begin(), m_Excludes.end(),
                        [&path](const std::string& pattern) { return matchesFolder(pattern, path); });
}

bool Filter::admitsFile(const std::string& path) const
{
    const auto matching = [&path](const std::string& pattern) { return matchesGlob(pattern, path); };
    for (const Rule& rule : m_Rules)
        if (matching(rule.pattern))
            return rule.includes;
    if (std::any_of(m_Excludes.begin(), m_Excludes.end(), matching))
        return false;
    return m_Includes.empty() || std::any_of(m_Includes.begin(), m_Includes.end(), matching);
}

} // namespace cli
