#ifndef LUMO_COMPONENTS_PLATFORM_DISPLAYWIDTH_H
#define LUMO_COMPONENTS_PLATFORM_DISPLAYWIDTH_H

#include "lumo/components/platform/Export.h"

#include <cstddef>
#include <string>

namespace platform {

/// Returns how many columns UTF-8 text without control characters takes on a terminal: East Asian wide
/// characters take two, combining ones none. Safe from any thread.
LUMO_EXPORT std::size_t displayWidth(const std::string& text);

} // namespace platform

#endif
