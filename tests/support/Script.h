#ifndef LUMO_TESTS_SUPPORT_SCRIPT_H
#define LUMO_TESTS_SUPPORT_SCRIPT_H

#include "tests/support/Files.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

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

/// A line that is no comment, and those after it that begin with one of some characters.
struct Statement
{
    std::string place; ///< of the first line, for messages
    std::vector<std::string> lines;
};

inline std::vector<Statement> statementsOf(const std::filesystem::path& file, const char* goingOn)
{
    std::vector<Statement> statements;
    std::istringstream lines(readFile(file));
    bool open = false;
    int number = 1;
    for (std::string line; std::getline(lines, line); ++number) {
        const bool goesOn = open && line.find_first_of(goingOn) == 0;
        open = goesOn || (!line.empty() && line[0] != '#');
        if (goesOn)
            statements.back().lines.push_back(line);
        else if (open)
            statements.push_back(
                {file.filename().string() + ":" + std::to_string(number) + ": " + line, {line}});
    }
    return statements;
}

/// The names of a folder's scripts, without their ending .txt.
inline std::vector<std::string> scriptsIn(const std::filesystem::path& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".txt")
            names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

#endif
