#ifndef LUMO_CENTRE_BASE_TEXT_H
#define LUMO_CENTRE_BASE_TEXT_H

#include <string>

namespace centre {

/// The text for a terminal: control characters and bytes that are not UTF-8 become \xNN.
std::string escaped(const std::string& text);

} // namespace centre

#endif
