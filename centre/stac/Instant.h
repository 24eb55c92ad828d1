#ifndef LUMO_CENTRE_STAC_INSTANT_H
#define LUMO_CENTRE_STAC_INSTANT_H

#include <optional>
#include <string>
#include <utility>

namespace centre {

// Times of records are days, in UTC. A record without a date has all days that a date can be.

constexpr char kFirstOfDays[] = "0001-01-01";
constexpr char kLastOfDays[] = "9999-12-31";
constexpr char kBeginOfDay[] = "T00:00:00Z";
constexpr char kEndOfDay[] = "T23:59:59Z";

/// Returns a time of RFC 3339 as "YYYY-MM-DDTHH:MM:SSZ" in UTC, without parts of a second. Throws
/// HttpError(400).
std::string utcTime(const std::string& text);

/// The first and the last day that an interval touches, "YYYY-MM-DD" each: a time, "time/time", "../time" or
/// "time/..". Throws HttpError(400).
std::pair<std::string, std::string> daysOf(const std::string& interval);

} // namespace centre

#endif
