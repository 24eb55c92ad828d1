#include "cli/progress/Measure.h"

#include <cmath>
#include <cstdio>
#include <fstream>

namespace cli {

namespace {

using Seconds = std::chrono::duration<double>;

constexpr Seconds kWindow{10};
constexpr Seconds kShortest{0.5};

std::string formatted(const char* format, double value)
{
    char text[64];
    static_cast<void>(std::snprintf(text, sizeof text, format, value));
    return text;
}

} // namespace

void Speed::sample(Clock::time_point when, double amount)
{
    m_Samples.emplace_back(when, amount);
    while (m_Samples.size() > 2 && when - m_Samples[1].first >= kWindow)
        m_Samples.pop_front();
}

std::optional<double> Speed::perSecond() const
{
    if (m_Samples.empty())
        return {};
    const Seconds span = m_Samples.back().first - m_Samples.front().first;
    if (span < kShortest)
        return {};
    return (m_Samples.back().second - m_Samples.front().second) / span.count();
}

std::string bytesText(double bytes)
{
    static const char* const kUnits[] = {" B", " KiB", " MiB", " GiB", " TiB"};
    std::size_t unit = 0;
    // 999.5 would be shown with four digits.
    while (bytes >= 999.5 && unit + 1 < std::size(kUnits)) {
        bytes /= 1024;
        ++unit;
    }
    const char* const format = unit == 0 || bytes >= 99.95 ? "%.0f" : bytes >= 9.995 ? "%.1f" : "%.2f";
    return formatted(format, bytes) + kUnits[unit];
}

std::string clockText(double seconds)
{
    const auto whole = static_cast<long long>(std::lround(seconds));
    char text[64];
    if (whole < 3600) {
        static_cast<void>(std::snprintf(text, sizeof text, "%lld:%02lld", whole / 60, whole % 60));
    } else {
        static_cast<void>(std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", whole / 3600,
                                        whole / 60 % 60, whole % 60));
    }
    return text;
}

std::string durationText(double seconds)
{
    if (seconds >= 59.5)
        return clockText(seconds);
    return formatted(seconds < 0.995 ? "%.2f s" : seconds < 9.95 ? "%.1f s" : "%.0f s", seconds);
}

std::optional<std::uint64_t> writtenBytes()
{
    std::ifstream file("/proc/self/io");
    std::string name;
    for (std::uint64_t count = 0; file >> name >> count;)
        if (name == "wchar:")
            return count;
    return {};
}

} // namespace cli
