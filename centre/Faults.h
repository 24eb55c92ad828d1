#ifndef LUMO_CENTRE_FAULTS_H
#define LUMO_CENTRE_FAULTS_H

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace centre {

/// What a fault switch makes of a call.
struct Fault
{
    enum class Kind
    {
        Stall,  ///< never answered
        Exit,   ///< the process ends at once, as if killed
        Refuse, ///< the call fails
        Result  ///< answered with a result and nothing else
    };

    Kind kind;
    std::int32_t result; ///< of Kind::Result
};

/// How often a fault switch fired.
struct FaultCount
{
    std::string text; ///< as the switch was given
    std::uint64_t fired;
};

/// The fault switches of a centre that is tested against. Safe from any thread once all are added.
class Faults
{
public:
    /// Adds the switch OPERATION[@N]=stall|exit|refuse|result:R, where N is the one call, counted from 1,
    /// that it fires for; without it, for every call. Throws Error(WrongUse) for any other text.
    /// Returns the operation.
    std::string add(const std::string& text);

    /// Counts a call; tells the first switch that fires for it.
    std::optional<Fault> fires(const std::string& operation);

    std::vector<FaultCount> counts() const;

private:
    struct Switch
    {
        std::string text;
        std::string operation;
        std::uint64_t onlyCall; ///< 0: every call
        Fault fault;
        std::uint64_t calls;
        std::uint64_t fired;
    };

    mutable std::mutex m_Mutex;
    std::vector<Switch> m_Switches;
};

} // namespace centre

#endif
