// Writes the tables of code page 936 as C++ initialisers, taken from ICU's converter windows-936. From
// Unicode they have ICU's fallbacks, too: the similar character that stands in for one that the code page
// lacks.

#include <unicode/ucnv.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

using Converter = std::unique_ptr<UConverter, decltype(&ucnv_close)>;

Converter openGbk(bool withFallbacks)
{
    UErrorCode status = U_ZERO_ERROR;
    Converter converter(ucnv_open("windows-936", &status), &ucnv_close);
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    if (U_FAILURE(status))
        throw std::runtime_error(u_errorName(status));
    ucnv_setFallback(converter.get(), static_cast<UBool>(withFallbacks));
    return converter;
}

/// The character of one or two bytes; U+FFFD when they are none.
unsigned int decode(UConverter* gbk, const char* bytes, int length)
{
    UErrorCode status = U_ZERO_ERROR;
    UChar units[2] = {};
    ucnv_reset(gbk);
    const int count = ucnv_toUChars(gbk, units, 2, bytes, length, &status);
    return U_SUCCESS(status) && count == 1 ? units[0] : 0xFFFD;
}

/// The bytes of one UTF-16 unit, the lead byte in the higher half; '?' when it has none.
unsigned int encode(UConverter* gbk, char16_t unit)
{
    UErrorCode status = U_ZERO_ERROR;
    char bytes[4] = {};
    ucnv_reset(gbk);
    const int count = ucnv_fromUChars(gbk, bytes, sizeof bytes, &unit, 1, &status);
    if (U_FAILURE(status) || count < 1 || count > 2)
        return '?';
    const unsigned int first = static_cast<unsigned char>(bytes[0]);
    // A few arrows would become control characters, whose old glyphs look alike.
    if (first < 0x20 && first != unit)
        return '?';
    return count == 1 ? first : first << 8 | static_cast<unsigned char>(bytes[1]);
}

template <class Value>
void writeTable(std::ostream& out, const char* declaration, int count, const Value& value)
{
    out << declaration << " = {";
    for (int i = 0; i < count; ++i)
        out << (i % 16 == 0 ? "\n" : " ") << value(i) << ',';
    out << "\n};\n";
}

void writeTables(std::ostream& out)
{
    const Converter gbk = openGbk(false);
    const Converter fittingGbk = openGbk(true);
    writeTable(out, "constexpr char16_t kGbkByteToUnit[256]", 256, [&](int i) {
        const char byte = static_cast<char>(i);
        return decode(gbk.get(), &byte, 1);
    });
    constexpr int kTrails = 0xFE - 0x40 + 1;
    writeTable(out, "constexpr char16_t kGbkPairToUnit[126 * 191]", 126 * kTrails, [&](int i) {
        const char pair[] = {static_cast<char>(0x81 + i / kTrails), static_cast<char>(0x40 + i % kTrails)};
        return decode(gbk.get(), pair, 2);
    });
    writeTable(out, "constexpr std::uint16_t kUnitToGbk[65536]", 65536,
               [&](int i) { return encode(fittingGbk.get(), static_cast<char16_t>(i)); });
}

} // namespace

int main(int argc, char** argv)
try {
    if (argc != 2)
        throw std::runtime_error("usage: make_gbk_tables FILE");
    std::ofstream out(argv[1]);
    writeTables(out);
    out.close();
    if (!out)
        throw std::runtime_error(std::string("can't write ") + argv[1]);
    return EXIT_SUCCESS;
} catch (const std::exception& error) {
    std::cerr << "make_gbk_tables: " << error.what() << '\n';
    return EXIT_FAILURE;
}
