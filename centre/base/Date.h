#ifndef LUMO_CENTRE_BASE_DATE_H
#define LUMO_CENTRE_BASE_DATE_H

#include <optional>
#include <string>

namespace centre {

/// The day as YYYY-MM-DD, from that form, YYYYMMDD or YYYY/MM/DD; nothing if the text is no day.
std::optional<std::string> isoDate(const std::string& text);

} // namespace centre

#endif
