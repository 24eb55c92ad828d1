#ifndef LUMO_COMPONENTS_PLATFORM_UTF8_H
#define LUMO_COMPONENTS_PLATFORM_UTF8_H

#include "lumo/components/platform/Export.h"

#include <cstddef>
#include <string>

namespace platform {

/// Whether the whole of `text` is well-formed UTF-8. Overlong forms, surrogates, code points above U+10FFFF
/// and characters that are cut off are not. NUL is a character like any other, and the empty text is
/// well-formed. Safe from any thread; allocates nothing.
LUMO_EXPORT bool isUtf8(const std::string& text);

constexpr char32_t kNoCharacter = 0xFFFFFFFF;

/// Decodes the character at `position`, which must be within the text, and moves past it. Returns
/// kNoCharacter for a byte that begins no well-formed character, and moves past that byte only. Safe from any
/// thread.
LUMO_EXPORT char32_t nextCharacter(const std::string& text, std::size_t& position);

/// Returns the text with everything escaped that a terminal would act on or that would disguise it: control
/// characters, line separators, marks of writing direction, bytes that are not UTF-8. The escapes are \n, \r,
/// \t, \xNN for another byte, \uNNNN for a character beyond ASCII. Safe from any thread.
LUMO_EXPORT std::string escaped(const std::string& text);

} // namespace platform

#endif
