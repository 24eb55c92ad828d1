// Text to the code page: UTF-8 into the char array of a record, against iconv and ICU with an open
// converter each.

#include "bench/Rows.h"
#include "lumo/core/TextEncoding.h"

#include <benchmark/benchmark.h>
#include <iconv.h>
#include <unicode/ucnv.h>

#include <array>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kField = 256 + 2; ///< takes the longest text here; every side zeroes what is left of it

std::mt19937 random_(936); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same texts in every run

std::string randomAscii()
{
    return std::string(1, static_cast<char>('!' + random_() % ('~' - '!')));
}

std::string randomChinese()
{
    const unsigned point = 0x4E00 + random_() % (0x9FA5 - 0x4E00);
    return {static_cast<char>(0xE0 | point >> 12), static_cast<char>(0x80 | (point >> 6 & 0x3F)),
            static_cast<char>(0x80 | (point & 0x3F))};
}

/// As the names of products are: some characters, a number, some characters again.
std::string randomMixed()
{
    std::string piece;
    const bool chinese = random_() % 2 == 0;
    for (auto count = 1 + random_() % 6; count > 0; --count)
        piece += chinese ? randomChinese() : randomAscii();
    return piece;
}

/// Many texts of one length, so that no branch is learnt by heart.
std::vector<std::string> makeTexts(std::string (*piece)(), std::size_t length)
{
    std::vector<std::string> texts(256);
    for (std::string& text : texts) {
        while (text.size() < length) {
            const std::string next = piece();
            text += text.size() + next.size() <= length ? next : randomAscii();
        }
    }
    return texts;
}

template <class Convert>
void convertAll(benchmark::State& state, const std::vector<std::string>& texts, Convert convert)
{
    std::array<char, kField> field;
    std::size_t next = 0;
    for (auto _ : state) {
        if (!convert(texts[next], field.data())) {
            state.SkipWithError("a text was not converted");
            return;
        }
        benchmark::DoNotOptimize(field);
        next = next + 1 < texts.size() ? next + 1 : 0;
    }
}

void ours(benchmark::State& state, const std::vector<std::string>& texts)
{
    convertAll(state, texts,
               [](const std::string& text, char* field) { return convertToMultibyte(text, field, kField); });
}

void viaIconv(benchmark::State& state, const std::vector<std::string>& texts)
{
    const iconv_t converter = iconv_open("GBK", "UTF-8");
    convertAll(state, texts, [converter](const std::string& text, char* field) {
        char* from = const_cast<char*>(text.data());
        std::size_t left = text.size(), room = kField;
        const bool converted = iconv(converter, &from, &left, &field, &room) == 0;
        std::memset(field, 0, room);
        return converted;
    });
    iconv_close(converter);
}

void viaIcu(benchmark::State& state, const std::vector<std::string>& texts)
{
    using Converter = std::unique_ptr<UConverter, decltype(&ucnv_close)>;
    UErrorCode opened = U_ZERO_ERROR;
    const Converter utf8(ucnv_open("UTF-8", &opened), &ucnv_close);
    const Converter gbk(ucnv_open("windows-936", &opened), &ucnv_close);
    convertAll(state, texts, [&](const std::string& text, char* field) {
        char* const end = field + kField;
        std::array<UChar, kField> pivot;
        UChar *pivotStart = pivot.data(), *pivotEnd = pivot.data();
        const char* from = text.data();
        UErrorCode status = U_ZERO_ERROR;
        ucnv_convertEx(gbk.get(), utf8.get(), &field, end, &from, from + text.size(), pivotStart, &pivotStart,
                       &pivotEnd, pivot.data() + pivot.size(), true, true, &status);
        std::memset(field, 0, static_cast<std::size_t>(end - field));
        return U_SUCCESS(status) != 0;
    });
}

void registerText(const std::string& kind, std::string (*piece)(), std::size_t length)
{
    const std::vector<std::string> texts = makeTexts(piece, length);
    const std::string suffix = '/' + kind + '/' + std::to_string(length);
    benchmark::RegisterBenchmark(("ours" + suffix).c_str(), ours, texts);
    benchmark::RegisterBenchmark(("iconv" + suffix).c_str(), viaIconv, texts);
    benchmark::RegisterBenchmark(("icu" + suffix).c_str(), viaIcu, texts);
    const std::string row = "text, " + kind + ", " + std::to_string(length) + " bytes, ns: ";
    rows::add(row + "iconv", "ours" + suffix, "iconv" + suffix, rows::Aim::kTimesFaster, 5);
    rows::add(row + "ICU", "ours" + suffix, "icu" + suffix, rows::Aim::kTimesFaster, 3);
}

} // namespace

int main(int argc, char** argv)
{
    for (const std::size_t length : {8, 32, 64, 256}) {
        registerText("ASCII", randomAscii, length);
        registerText("Chinese", randomChinese, length);
        registerText("mixed", randomMixed, length);
    }
    return rows::run(argc, argv);
}
