#ifndef LUMO_CORE_TEXTENCODING_H
#define LUMO_CORE_TEXTENCODING_H

#include "lumo/components/platform/Export.h"

#include <string>

/// Between UTF-8, which the services speak, and the system code page of the records
/// (lumo/components/platform/CodePage.h). A text ends at its first NUL. What does not decode becomes
/// U+FFFD, what the target lacks becomes a similar character or '?'; neither is a failure. Safe from any
/// thread.

/// Converts UTF-8 `text` into `buffer` of `size` bytes and zero-fills the rest. Returns true when the whole
/// text is there; it may take at most `size` - 2 bytes. A longer text is refused whole: false, and
/// `buffer` is untouched.
LUMO_EXPORT bool convertToMultibyte(const std::string& text, char* buffer, int size);

/// Converts UTF-8 to the system code page; empty when memory runs out.
LUMO_EXPORT std::string convertToMultibyte(const std::string& text);

/// Converts the system code page to UTF-8; empty when memory runs out.
LUMO_EXPORT std::string convertToUtf8(const std::string& text);

#endif
