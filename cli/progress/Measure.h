#ifndef LUMO_CLI_PROGRESS_MEASURE_H
#define LUMO_CLI_PROGRESS_MEASURE_H

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <utility>

namespace cli {

/// The speed at which an amount has grown over the last seconds.
class Speed
{
public:
    using Clock = std::chrono::steady_clock;

    void sample(Clock::time_point when, double amount);
    /// Per second; none until enough time has passed to measure it.
    std::optional<double> perSecond() const;

private:
    std::deque<std::pair<Clock::time_point, double>> m_Samples;
};

/// "0 B", "999 B", "1.50 KiB", "12.3 MiB", "123 GiB": three digits.
std::string bytesText(double bytes);

/// "0:07", "12:34", "1:02:03".
std::string clockText(double seconds);

/// "0.42 s", "4.2 s", "42 s", "12:34".
std::string durationText(double seconds);

/// Bytes that this process has written to files, sockets not among them; none where the system does not count
/// them.
std::optional<std::uint64_t> writtenBytes();

} // namespace cli

#endif
