#include "centre/Faults.h"

#include "centre/Error.h"

#include <regex>

namespace centre {

namespace {

Fault parse(const std::string& kind, const std::string& result)
{
    if (kind == "stall")
        return {Fault::Kind::Stall, 0};
    if (kind == "exit")
        return {Fault::Kind::Exit, 0};
    if (kind == "refuse")
        return {Fault::Kind::Refuse, 0};
    return {Fault::Kind::Result, std::stoi(result)};
}

} // namespace

std::string Faults::add(const std::string& text)
{
    static const std::regex form(R"((\w+)(@([1-9]\d{0,8}))?=(stall|exit|refuse|result:(-?\d{1,9})))");
    std::smatch parts;
    if (!std::regex_match(text, parts, form))
        throw Error(ExitCode::WrongUse,
                    "not a fault: " + text + "; a fault is OPERATION[@N]=stall|exit|refuse|result:R");
    const std::uint64_t onlyCall = parts[3].matched ? std::stoull(parts[3]) : 0;
    m_Switches.push_back({text, parts[1], onlyCall, parse(parts[4], parts[5]), 0, 0});
    return parts[1];
}

std::optional<Fault> Faults::fires(const std::string& operation)
{
    if (m_Switches.empty())
        return std::nullopt;
    const std::lock_guard<std::mutex> lock(m_Mutex);
    std::optional<Fault> first;
    for (Switch& each : m_Switches) {
        if (each.operation != operation)
            continue;
        ++each.calls;
        if (first || (each.onlyCall != 0 && each.onlyCall != each.calls))
            continue;
        ++each.fired;
        first = each.fault;
    }
    return first;
}

std::vector<FaultCount> Faults::counts() const
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    std::vector<FaultCount> counts;
    for (const Switch& each : m_Switches)
        counts.push_back({each.text, each.fired});
    return counts;
}

} // namespace centre
