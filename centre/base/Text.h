#ifndef LUMO_CENTRE_BASE_TEXT_H
#define LUMO_CENTRE_BASE_TEXT_H

#include "lumo/components/platform/Utf8.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace centre {

using platform::escaped;

/// Returns the escaped start of a text that may be long, with "..." if it is cut.
std::string abbreviated(const std::string& text);

/// The longest text that a user may register, in bytes.
constexpr std::size_t kLongestText = 65536;

/// Throws Error(Failed) for a longer text; `what` it would be, "a comment".
void requireShort(const std::string& text, const std::string& what);

/// Returns "1 problem", "2 problems": the count and the noun, whose plural ends with s.
std::string counted(std::uint64_t count, const std::string& noun);

/// Returns the shortest text that is read as the same number.
std::string numberText(double value);

} // namespace centre

#endif
