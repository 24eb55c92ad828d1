#ifndef LUMO_CLI_PROGRESS_PROGRESSVIEW_H
#define LUMO_CLI_PROGRESS_PROGRESSVIEW_H

#include "cli/progress/Measure.h"
#include "cli/progress/Transfer.h"

#include <memory>
#include <string>

namespace cli {

/// The progress of all transfers of one command together.
class Totals
{
public:
    explicit Totals(const std::vector<Transfer>& transfers);

    /// Takes a measurement.
    void sample();

    const std::vector<Transfer>& transfers() const { return m_Transfers; }
    std::size_t ended() const;
    /// The part that is done, 0 to 1; none where the library does not report it.
    std::optional<double> fraction() const;
    /// The size of all sources, where it is known.
    std::optional<double> bytes() const;
    std::optional<double> movedBytes() const;
    std::optional<double> bytesPerSecond() const;
    std::optional<double> secondsLeft() const;
    double seconds() const;

private:
    double weight(const Transfer& transfer) const;
    /// Weights, of 1 for each byte where those are known.
    double total() const;
    double through() const;

    const std::vector<Transfer>& m_Transfers;
    const Speed::Clock::time_point m_Begin = Speed::Clock::now();
    const std::optional<std::uint64_t> m_Written = writtenBytes();
    std::optional<double> m_Received;
    Speed m_Through;
    Speed m_Receives;
    double m_Skipped = 0; ///< done without moving: what earlier attempts had moved
    std::vector<int> m_Percents;
};

/// Shows transfers while they run. Output may throw Failure, as print does.
class ProgressView
{
public:
    /// Makes events for a program, a bar on a terminal, or lines.
    static std::unique_ptr<ProgressView> make(bool json);

    virtual ~ProgressView() = default;

    virtual void began(const Transfer& /*transfer*/) {}
    virtual void advanced(const Transfer& /*transfer*/, const Totals& /*totals*/) {}
    /// A file of a transfer failed; the others go on.
    virtual void fileFailed(const Transfer& transfer, const std::string& path, const std::string& reason);
    virtual void ended(const Transfer& transfer) = 0;
    /// Time has passed.
    virtual void refresh(const Totals& /*totals*/) {}
    /// All have ended.
    virtual void finished(const Totals& /*totals*/) {}
    /// How often to refresh.
    virtual std::chrono::milliseconds interval() const { return std::chrono::milliseconds(1000); }
};

} // namespace cli

#endif
