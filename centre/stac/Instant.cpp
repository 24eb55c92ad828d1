#include "centre/stac/Instant.h"

#include "centre/base/Text.h"
#include "centre/http/Http.h"

#include <QDateTime>

#include <regex>

namespace centre {

namespace {

constexpr int kSecondsOfMinute = 60;
constexpr std::size_t kLengthOfDay = 10;

HttpError notATime(const std::string& text)
{
    return {400, "'" + abbreviated(text) + "' is not a time of RFC 3339, such as 2026-01-31T12:00:00Z"};
}

/// Returns the minutes by which local time is ahead of UTC, from "Z", "+08:00" or "-03:30".
int offsetMinutes(const std::string& zone)
{
    if (zone == "Z" || zone == "z")
        return 0;
    const int minutes = std::stoi(zone.substr(1, 2)) * kSecondsOfMinute + std::stoi(zone.substr(4, 2));
    return zone[0] == '-' ? -minutes : minutes;
}

bool isOpen(const std::string& end)
{
    return end.empty() || end == "..";
}

} // namespace

std::string utcTime(const std::string& text)
{
    static const std::regex form(
        R"((\d{4}-\d\d-\d\d)[Tt ](\d\d:\d\d):(\d\d)(\.\d{1,20})?([Zz]|[+-]\d\d:\d\d))");
    std::smatch parts;
    constexpr std::size_t kLongest = 64;
    if (text.size() > kLongest || !std::regex_match(text, parts, form))
        throw notATime(text);
    const QDate day = QDate::fromString(QString::fromStdString(parts[1]), Qt::ISODate);
    const bool isLeapSecond = parts[3] == "60";
    const std::string clock = parts[2].str() + ":" + (isLeapSecond ? "59" : parts[3].str());
    const QTime time = QTime::fromString(QString::fromStdString(clock), Qt::ISODate);
    if (!day.isValid() || !time.isValid())
        throw notATime(text);
    const QDateTime utc =
        QDateTime(day, time, Qt::UTC).addSecs(-qint64(kSecondsOfMinute) * offsetMinutes(parts[5]));
    if (utc.date().year() < 1 || utc.date().year() > 9999)
        throw notATime(text);
    return utc.toString("yyyy-MM-ddTHH:mm:ss").toStdString() + "Z";
}

std::pair<std::string, std::string> daysOf(const std::string& interval)
{
    const std::size_t slash = interval.find('/');
    const std::string from = interval.substr(0, slash);
    const std::string to = slash == std::string::npos ? from : interval.substr(slash + 1);
    if (isOpen(from) && isOpen(to))
        throw HttpError(400, "an interval of times must have at least one end");
    const std::string begin = isOpen(from) ? kFirstOfDays + std::string(kBeginOfDay) : utcTime(from);
    const std::string end = isOpen(to) ? kLastOfDays + std::string(kEndOfDay) : utcTime(to);
    if (end < begin)
        throw HttpError(400, "the interval '" + abbreviated(interval) + "' ends before it begins");
    return {begin.substr(0, kLengthOfDay), end.substr(0, kLengthOfDay)};
}

} // namespace centre
