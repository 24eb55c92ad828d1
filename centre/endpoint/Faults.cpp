#include "centre/endpoint/Faults.h"

#include "centre/base/Error.h"

#include <QRegularExpression>
#include <QString>

namespace centre {

namespace {

Fault parse(const QRegularExpressionMatch& parts)
{
    const QString kind = parts.captured("kind");
    if (kind == "stall")
        return {Fault::Kind::Stall};
    if (kind == "exit")
        return {Fault::Kind::Exit};
    if (kind == "refuse")
        return {Fault::Kind::Refuse};
    if (kind == "corrupt")
        return {Fault::Kind::Corrupt};
    if (kind.startsWith("break"))
        return {Fault::Kind::Break, 0, parts.captured("bytes").toULongLong()};
    return {Fault::Kind::Result, parts.captured("result").toInt()};
}

} // namespace

bool isOnData(const Fault& fault)
{
    return fault.kind == Fault::Kind::Corrupt || fault.kind == Fault::Kind::Break;
}

Faults::Added Faults::add(const std::string& text)
{
    static const QRegularExpression form(QRegularExpression::anchoredPattern(
        R"((\w+)(?:@([1-9]\d{0,8}))?=)"
        R"((?<kind>stall|exit|refuse|result:(?<result>-?\d{1,9})|corrupt|break:(?<bytes>\d{1,15})))"));
    const QRegularExpressionMatch parts = form.match(QString::fromStdString(text));
    const bool oneCall = !parts.captured(2).isEmpty();
    if (!parts.hasMatch() || (oneCall && !parts.captured("bytes").isEmpty()))
        throw Error(ExitCode::WrongUse, "not a fault: " + text +
                                            "; a fault is OPERATION[@N]=stall|exit|refuse|result:R|corrupt"
                                            " or OPERATION=break:BYTES");
    Added added{parts.captured(1).toStdString(), parse(parts)};
    m_Switches.push_back({text, added.operation, parts.captured(2).toULongLong(), added.fault});
    return added;
}

std::optional<Fault> Faults::fires(const std::string& operation)
{
    return first(operation, false, 0);
}

std::optional<Fault> Faults::firesOnData(const std::string& operation, std::uint64_t bytes)
{
    return first(operation, true, bytes);
}

std::optional<Fault> Faults::first(const std::string& operation, bool onData, std::uint64_t bytes)
{
    if (m_Switches.empty())
        return std::nullopt;
    const std::lock_guard<std::mutex> lock(m_Mutex);
    std::optional<Fault> first;
    for (Switch& each : m_Switches) {
        if (each.operation != operation || isOnData(each.fault) != onData || !each.applies(bytes) || first)
            continue;
        ++each.fired;
        first = each.fault;
    }
    return first;
}

bool Faults::Switch::applies(std::uint64_t moved)
{
    ++calls;
    bytes += moved;
    if (fault.kind == Fault::Kind::Break)
        return bytes > fault.after;
    return onlyCall == 0 || onlyCall == calls;
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
