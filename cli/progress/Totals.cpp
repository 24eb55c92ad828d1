#include "cli/progress/ProgressView.h"

#include <algorithm>

namespace cli {

Totals::Totals(const std::vector<Transfer>& transfers) : m_Transfers(transfers), m_Percents(transfers.size())
{
}

double Totals::weight(const Transfer& transfer) const
{
    // An empty file counts as a transfer, too.
    return transfer.bytes ? std::max(1.0, static_cast<double>(*transfer.bytes)) : 1.0;
}

double Totals::total() const
{
    double sum = 0;
    for (const Transfer& one : m_Transfers)
        sum += weight(one);
    return sum;
}

double Totals::through() const
{
    double sum = 0;
    for (const Transfer& one : m_Transfers)
        sum += weight(one) * (one.ended() ? 100 : one.percent) / 100;
    return sum;
}

void Totals::sample()
{
    for (std::size_t i = 0; i < m_Transfers.size(); ++i) {
        const Transfer& one = m_Transfers[i];
        // A resumed transfer begins where the last attempt stopped, and has not moved the part before.
        const bool first = m_Percents[i] == 0 && one.percent > 0 && one.percent < 100;
        if (first || one.kept() || one.phase == Transfer::Phase::Failed) {
            const int now = one.ended() ? 100 : one.percent;
            m_Skipped += weight(one) * (now - m_Percents[i]) / 100;
            m_Percents[i] = now;
        } else {
            m_Percents[i] = one.percent;
        }
    }
    const auto now = Speed::Clock::now();
    m_Through.sample(now, through() - m_Skipped);
    if (const auto written = m_Written ? writtenBytes() : std::nullopt) {
        m_Received = static_cast<double>(*written - *m_Written);
        m_Receives.sample(now, *m_Received);
    }
}

std::size_t Totals::ended() const
{
    return static_cast<std::size_t>(std::count_if(m_Transfers.begin(), m_Transfers.end(),
                                                  [](const Transfer& one) { return one.ended(); }));
}

std::optional<double> Totals::fraction() const
{
    const bool reported = std::all_of(m_Transfers.begin(), m_Transfers.end(),
                                      [](const Transfer& one) { return one.reportsProgress; });
    return reported ? std::optional(through() / total()) : std::nullopt;
}

std::optional<double> Totals::bytes() const
{
    const bool known = std::all_of(m_Transfers.begin(), m_Transfers.end(),
                                   [](const Transfer& one) { return !one.get && one.bytes; });
    return known ? std::optional(total()) : std::nullopt;
}

std::optional<double> Totals::movedBytes() const
{
    return bytes() ? std::optional(through()) : m_Received;
}

std::optional<double> Totals::bytesPerSecond() const
{
    return bytes() ? m_Through.perSecond() : m_Receives.perSecond();
}

std::optional<double> Totals::secondsLeft() const
{
    const auto speed = m_Through.perSecond();
    if (!fraction() || !speed || *speed <= 0)
        return {};
    return (total() - through()) / *speed;
}

double Totals::seconds() const
{
    return std::chrono::duration<double>(Speed::Clock::now() - m_Begin).count();
}

} // namespace cli
