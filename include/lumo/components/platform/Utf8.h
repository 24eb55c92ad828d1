#ifndef LUMO_COMPONENTS_PLATFORM_UTF8_H
#define LUMO_COMPONENTS_PLATFORM_UTF8_H

#include "lumo/components/platform/Export.h"

#include <string>

namespace platform {

/// Whether the whole of `text` is well-formed UTF-8. Overlong forms, surrogates, code points above U+10FFFF
/// and characters that are cut off are not. NUL is a character like any other, and the empty text is
/// well-formed. Safe from any thread; allocates nothing.
LUMO_EXPORT bool isUtf8(const std::string& text);

} // namespace platform

#endif
