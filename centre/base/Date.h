#ifndef LUMO_CENTRE_BASE_DATE_H
#define LUMO_CENTRE_BASE_DATE_H

#include <optional>
#include <string>

namespace centre {

/// Returns the day as YYYY-MM-DD, from a text of that form, YYYYMMDD or YYYY/MM/DD; nothing for any other
/// text.
std::optional<std::string> isoDate(const std::string& text);

} // namespace centre

#endif
