#include "centre/Faults.h"

#include "centre/Error.h"

#include <QRegularExpression>
#include <QString>

namespace centre {

namespace {

Fault parse(const QString& kind, const QString& result)
{
    if (kind == "stall")
        return {Fault::Kind::Stall, 0};
    if (kind == "exit")
        return {Fault::Kind::Exit, 0};
    if (kind == "refuse")
        return {Fault::Kind::Refuse, 0};
    return {Fault::Kind::Result, result.toInt()};
}

} // namespace

std::string Faults::add(const std::string& text)
{
    static const QRegularExpression form(QRegularExpression::anchoredPattern(
        R"((\w+)(?:@([1-9]\d{0,8}))?=(stall|exit|refuse|result:(-?\d{1,9})))"));
    const QRegularExpressionMatch parts = form.match(QString::fromStdString(text));
    if (!parts.hasMatch())
        throw Error(ExitCode::WrongUse,
                    "not a fault: " + text + "; a fault is OPERATION[@N]=stall|exit|refuse|result:R");
    std::string operation = parts.captured(1).toStdString();
    m_Switches.push_back({text, operation, parts.captured(2).toULongLong(),
                          parse(parts.captured(3), parts.captured(4)), 0, 0});
    return operation;
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
