#include "lumo/components/platform/DisplayWidth.h"

#include "lumo/components/platform/Utf8.h"

#include <cwchar>
#include <locale.h>

namespace platform {

namespace {

/// Sets the thread's locale, which wcwidth uses; this one is part of the C library, so it always exists.
class Utf8Locale
{
public:
    Utf8Locale() : m_Previous(uselocale(locale())) {}
    ~Utf8Locale() { uselocale(m_Previous); }
    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;

private:
    static locale_t locale()
    {
        static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return utf8;
    }

    locale_t m_Previous;
};

} // namespace

std::size_t displayWidth(const std::string& text)
{
    const Utf8Locale locale;
    std::size_t width = 0;
    for (std::size_t position = 0; position < text.size();) {
        const int columns = wcwidth(static_cast<wchar_t>(nextCharacter(text, position)));
        width += columns < 0 ? 1 : columns;
    }
    return width;
}

} // namespace platform
