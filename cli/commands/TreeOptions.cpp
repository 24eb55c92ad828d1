#include "cli/commands/TreeOptions.h"

#include "cli/base/ExitCode.h"
#include "cli/commands/SharedOptions.h"

#include <cmath>
#include <cstdlib>
#include <ctime>

namespace cli {

namespace {

/// The begin of a day of this machine's time zone, "2026-11-24", in seconds since 1970.
std::int64_t parseDay(const std::string& text)
{
    std::tm day = {};
    const char* const end = ::strptime(text.c_str(), "%Y-%m-%d", &day);
    if (end == nullptr || *end != '\0')
        refuse("'" + text + "' is not a day: write it as in 2026-11-24");
    day.tm_isdst = -1;
    return std::mktime(&day);
}

} // namespace

std::uint64_t parseBytes(const std::string& text)
{
    char* end = nullptr;
    double value = std::strtod(text.c_str(), &end);
    const std::string unit = end;
    const std::string units = "kMGT";
    const std::size_t place = unit.size() == 1 ? units.find(unit == "K" ? 'k' : unit[0]) : std::string::npos;
    if (place != std::string::npos)
        value *= std::pow(1024.0, static_cast<double>(place + 1));
    constexpr double kMost = 1e18;
    if (end == text.c_str() || !(value >= 0 && value <= kMost) ||
        (place == std::string::npos && !unit.empty()))
        refuse("'" + text + "' is not a size: write it as in 512, 10k, 1.5M or 2G");
    return static_cast<std::uint64_t>(value);
}

void TreeOptions::addFilter(CLI::App& app)
{
    addOption(app, "--include", m_Includes, "PATTERN",
              "Only files whose path in the folder matches, as in '*.tif' or '2026/**'; may be given again")
        ->expected(1);
    addOption(app, "--exclude", m_Excludes, "PATTERN",
              "No files or folders whose path matches; takes precedence over --include")
        ->expected(1);
    addOption(app, "--filter-from", m_FilterFiles, "FILE",
              "Rules of a file, '+ PATTERN' or '- PATTERN' a line; the first that matches decides")
        ->expected(1);
    addOption(app, "--min-size", m_MinSize, "SIZE",
              "Only files of at least so many bytes: 512, 10k, 1.5M, 2G");
    addOption(app, "--newer", m_Newer, "DAY", "Only local files that were changed on this day or later");
}

void TreeOptions::addRun(CLI::App& app)
{
    addOption(app, "--transfers", run.transfers, "N", "Files of a folder that move at once (default: 4)")
        ->check(positiveNumber);
    addOption(app, "--retries", run.retries, "N",
              "Further attempts for a file after a lost connection or a busy target (default: 2)")
        ->check(wholeNumber);
    addFlag(app, "--stop-at-first", run.stopAtFirst, "End at the first file of a folder that fails");
}

void TreeOptions::apply(bool localSource)
{
    constexpr unsigned int kMost = 64;
    if (run.transfers > kMost)
        refuse("--transfers: at most 64 files can move at once");
    for (const std::string& pattern : m_Includes)
        filter.include(pattern);
    for (const std::string& pattern : m_Excludes)
        filter.exclude(pattern);
    for (const std::string& file : m_FilterFiles)
        filter.read(file);
    if (!m_MinSize.empty())
        filter.minimum = parseBytes(m_MinSize);
    if (!m_Newer.empty() && !localSource)
        refuse("--newer is for local files: the catalogue does not have the times of its files");
    if (!m_Newer.empty())
        filter.newerThan = parseDay(m_Newer);
}

} // namespace cli
