#ifndef LUMO_COMPONENTS_PLATFORM_CODEPAGE_H
#define LUMO_COMPONENTS_PLATFORM_CODEPAGE_H

#include "lumo/components/platform/Export.h"

#include <cstddef>

/// Code pages: the encodings of the texts in the library's records.
///
/// Conversion never fails on content. A byte that does not decode becomes U+FFFD. A UTF-16 unit that the
/// target code page lacks becomes the similar character that the platform's best fit gives it ("2" for
/// U+00B2), or '?' where there is none (so a character above U+FFFF gives two). A code page other than the
/// two below converts nothing and gives 0. All functions are safe from any thread and allocate nothing.
namespace platform {

constexpr unsigned int kGbkCodePage = 936;    ///< simplified Chinese, as windows-936
constexpr unsigned int kUtf8CodePage = 65001; ///< UTF-8

/// The code page in which the library hands texts to the application; GBK unless set.
LUMO_EXPORT unsigned int systemCodePage();

/// Sets the system code page for the whole process: kGbkCodePage or kUtf8CodePage. For any other
/// it returns false and changes nothing. Call it before the first record is read: texts that were converted
/// earlier stay as they are.
LUMO_EXPORT bool setSystemCodePage(unsigned int codePage);

/// Converts `length` bytes of `text` from `codePage` to UTF-16. Writes at most `capacity` units and
/// returns the number of units of the whole result, which may be more than was written; a null
/// `units` with capacity 0 only counts. No terminator is added.
LUMO_EXPORT std::size_t toUtf16(unsigned int codePage, const char* text, std::size_t length, char16_t* units,
                                std::size_t capacity);

/// Converts `length` UTF-16 units to `codePage`. Writes at most `capacity` bytes, never a part of a
/// character, and returns the number of bytes of the whole result; a null `text` with capacity 0
/// only counts. No terminator is added.
LUMO_EXPORT std::size_t fromUtf16(unsigned int codePage, const char16_t* units, std::size_t length,
                                  char* text, std::size_t capacity);

/// Does the same as the two above in one pass: from one code page to the other, with the same result. The
/// bytes after the result, within `capacity`, are unspecified afterwards; so are all `capacity` bytes when
/// the result is longer.
LUMO_EXPORT std::size_t recode(unsigned int from, unsigned int to, const char* text, std::size_t length,
                               char* result, std::size_t capacity);

} // namespace platform

#endif
