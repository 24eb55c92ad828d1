#ifndef LUMO_CENTRE_ENDPOINT_FAULTS_H
#define LUMO_CENTRE_ENDPOINT_FAULTS_H

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace centre {

/// The way in which a call fails.
struct Fault
{
    enum class Kind
    {
        Stall,   ///< never answered
        Exit,    ///< the process ends at once, as if killed
        Refuse,  ///< the call fails
        Result,  ///< answered with a result and nothing else
        Corrupt, ///< a byte of the data that it moves is changed
        Break    ///< the call fails, and every later one too
    };

    Kind kind;
    std::int32_t result = 0; ///< of Kind::Result
    std::uint64_t after = 0; ///< of Kind::Break: the number of bytes that the operation moves before it
};

/// Whether the fault concerns the data that a call moves.
bool isOnData(const Fault& fault);

/// How often a fault switch fired.
struct FaultCount
{
    std::string text; ///< the switch, as the operator wrote it
    std::uint64_t fired;
};

/// The fault switches of a centre, for tests of its clients. Safe from any thread once all are added.
class Faults
{
public:
    struct Added
    {
        std::string operation;
        Fault fault;
    };

    /// Adds the switch OPERATION[@N]=stall|exit|refuse|result:R|corrupt or OPERATION=break:BYTES, where N is
    /// the one call, counted from 1, that it fires for; without it, for every call. Throws Error(WrongUse)
    /// for any other text.
    Added add(const std::string& text);

    /// Counts a call. Returns the fault of the first switch that fires for it: stall, exit, refuse or result.
    std::optional<Fault> fires(const std::string& operation);
    /// Counts a call that moves data. Returns the fault of the first switch that fires for it: corrupt or
    /// break.
    std::optional<Fault> firesOnData(const std::string& operation, std::uint64_t bytes);

    std::vector<FaultCount> counts() const;

private:
    struct Switch
    {
        std::string text;
        std::string operation;
        std::uint64_t onlyCall; ///< 0: every call
        Fault fault;
        std::uint64_t calls = 0;
        std::uint64_t bytes = 0;
        std::uint64_t fired = 0;

        bool applies(std::uint64_t moved);
    };

    std::optional<Fault> first(const std::string& operation, bool onData, std::uint64_t bytes);

    mutable std::mutex m_Mutex;
    std::vector<Switch> m_Switches;
};

} // namespace centre

#endif
