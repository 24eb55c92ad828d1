#include "lumo/components/platform/CodePage.h"
#include "lumo/components/platform/Utf8.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

using platform::kGbkCodePage;
using platform::kUtf8CodePage;

namespace {

std::u16string toUtf16(unsigned int codePage, const std::string& text)
{
    std::u16string units(platform::toUtf16(codePage, text.data(), text.size(), nullptr, 0), u'\0');
    const std::size_t count =
        platform::toUtf16(codePage, text.data(), text.size(), units.data(), units.size());
    EXPECT_EQ(count, units.size());
    return units;
}

std::string fromUtf16(unsigned int codePage, const std::u16string& units)
{
    std::string text(platform::fromUtf16(codePage, units.data(), units.size(), nullptr, 0), '\0');
    const std::size_t count =
        platform::fromUtf16(codePage, units.data(), units.size(), text.data(), text.size());
    EXPECT_EQ(count, text.size());
    return text;
}

std::string recode(unsigned int from, unsigned int to, const std::string& text)
{
    std::string result(platform::recode(from, to, text.data(), text.size(), nullptr, 0), '\0');
    const std::size_t count =
        platform::recode(from, to, text.data(), text.size(), result.data(), result.size());
    EXPECT_EQ(count, result.size());
    return result;
}

/// ICU's converter of GBK, which stops at what has no mapping.
class IcuGbk
{
public:
    IcuGbk() : m_Converter(ucnv_open("windows-936", &m_Status), &ucnv_close)
    {
        ucnv_setToUCallBack(m_Converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &m_Status);
        ucnv_setFromUCallBack(m_Converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                              &m_Status);
        EXPECT_TRUE(U_SUCCESS(m_Status));
        ucnv_setFallback(m_Converter.get(), true);
    }

    /// Empty when the bytes are not a whole text of this code page.
    std::u16string decode(const std::string& text)
    {
        UChar units[4];
        UErrorCode status = U_ZERO_ERROR;
        ucnv_reset(m_Converter.get());
        const int count =
            ucnv_toUChars(m_Converter.get(), units, 4, text.data(), static_cast<int>(text.size()), &status);
        return U_SUCCESS(status) ? std::u16string(units, static_cast<std::size_t>(count)) : std::u16string();
    }

    std::string encode(char16_t unit)
    {
        char bytes[8];
        UErrorCode status = U_ZERO_ERROR;
        ucnv_reset(m_Converter.get());
        const int count = ucnv_fromUChars(m_Converter.get(), bytes, sizeof bytes, &unit, 1, &status);
        return U_SUCCESS(status) ? std::string(bytes, static_cast<std::size_t>(count)) : std::string();
    }

private:
    UErrorCode m_Status = U_ZERO_ERROR;
    std::unique_ptr<UConverter, decltype(&ucnv_close)> m_Converter;
};

/// Texts that exercise every boundary of the fast paths: ASCII runs of all lengths around characters
/// of one to four bytes and bytes that decode to nothing.
std::vector<std::string> randomTexts()
{
    const std::string pieces[] = {"a",          "path/",        "12345678",     "\u00E9",
                                  "\u4E2D",     "\u5F71\u50CF", "\uFF08",       "\uD55C",
                                  "\U0001F30D", "\xE5\x9B",     "\xED\xA0\x80", "\xE0\x80\x80",
                                  "\xFF",       "\x80",         "\xD6\xD0"};
    std::mt19937 random(936); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same texts in every run
    std::vector<std::string> texts(2000);
    for (std::string& text : texts)
        for (auto count = random() % 12; count > 0; --count)
            text += pieces[random() % std::size(pieces)];
    return texts;
}

TEST(CodePage, DecodesEveryPairOfBytesAsIcuDoes)
{
    IcuGbk icu;
    const auto single = [&](char byte) {
        const std::u16string decoded = icu.decode({byte});
        return decoded.empty() ? std::u16string(u"\uFFFD") : decoded;
    };
    for (int first = 0; first < 256; ++first) {
        const char lead = static_cast<char>(first);
        ASSERT_EQ(toUtf16(kGbkCodePage, {lead}), single(lead)) << first;
        for (int second = 0; second < 256; ++second) {
            const char trail = static_cast<char>(second);
            std::u16string expected = icu.decode({lead, trail});
            if (expected.empty())
                expected = single(lead) + single(trail);
            ASSERT_EQ(toUtf16(kGbkCodePage, {lead, trail}), expected) << first << ' ' << second;
        }
    }
}

TEST(CodePage, EncodesEveryUnitAsIcuDoesWithTheSimilarCharacterOrAQuestionMarkForWhatIsMissing)
{
    IcuGbk icu;
    int exact = 0;
    int similar = 0;
    for (int value = 0; value <= 0xFFFF; ++value) {
        const auto unit = static_cast<char16_t>(value);
        std::string expected = icu.encode(unit);
        const bool isControl = expected.size() == 1 && expected[0] >= 0 && expected[0] < ' ';
        if (expected.empty() || (isControl && unit >= ' '))
            expected = "?";
        ASSERT_EQ(fromUtf16(kGbkCodePage, {unit}), expected) << value;
        const bool same = toUtf16(kGbkCodePage, expected) == std::u16string{unit};
        exact += same;
        similar += !same && expected != "?";
        ASSERT_FALSE(!same && (expected == "/" || expected == "\\" || expected == ".")) << value;
    }
    EXPECT_EQ(exact, 24070);
    EXPECT_EQ(similar, 412);
    EXPECT_EQ(fromUtf16(kGbkCodePage, u"\u00A3\u00B2\u00C0\u00A6\uFFE9\uD55C"), "\xA1\xEA"
                                                                                "2\xA8\xA4|??");
}

TEST(CodePage, CarriesEveryCharacterThroughUtf8)
{
    std::u16string all;
    for (char32_t point = 0; point <= 0x10FFFF; ++point) {
        if (point > 0xFFFF) {
            all += static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10));
            all += static_cast<char16_t>(0xDC00 + (point & 0x3FF));
        } else if (point < 0xD800 || point > 0xDFFF) {
            all += static_cast<char16_t>(point);
        }
    }
    std::string expected(all.size() * 3, '\0');
    int length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8(expected.data(), static_cast<int>(expected.size()), &length, all.data(),
                static_cast<int>(all.size()), &status);
    ASSERT_TRUE(U_SUCCESS(status));
    expected.resize(static_cast<std::size_t>(length));
    EXPECT_TRUE(fromUtf16(kUtf8CodePage, all) == expected);
    EXPECT_TRUE(toUtf16(kUtf8CodePage, expected) == all);
}

TEST(CodePage, GivesOneReplacementForEachByteOfUtf8ThatDoesNotDecode)
{
    const struct
    {
        const char* what;
        std::string text;
        std::u16string units;
    } cases[] = {
        {"a continuation alone", "a\x80z", u"a\uFFFDz"},
        {"overlong, two bytes", "\xC0\xAF|\xC1\xBF", u"\uFFFD\uFFFD|\uFFFD\uFFFD"},
        {"overlong, three bytes", "\xE0\x9F\xBF", u"\uFFFD\uFFFD\uFFFD"},
        {"overlong, four bytes", "\xF0\x8F\xBF\xBF", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"a surrogate", "\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"a pair of surrogates", "\xED\xAF\xBF\xED\xBF\xBF", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"beyond U+10FFFF", "\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"a lead of five bytes", "\xF8\x88\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"never in UTF-8", "\xFE\xFF", u"\uFFFD\uFFFD"},
        {"cut after one", "\xE4", u"\uFFFD"},
        {"cut after two", "\xE4\xB8", u"\uFFFD\uFFFD"},
        {"cut after three", "\xF0\x9F\x8C", u"\uFFFD\uFFFD\uFFFD"},
        {"a lead ahead of ASCII", "\xC3(\xE4(\xE4\xB8(", u"\uFFFD(\uFFFD(\uFFFD\uFFFD("},
        {"the limits that do decode", "\xED\x9F\xBF\xEE\x80\x80\xF4\x8F\xBF\xBF", u"\uD7FF\uE000\U0010FFFF"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(toUtf16(kUtf8CodePage, row.text), row.units) << row.what;
        EXPECT_EQ(platform::isUtf8(row.text), row.units.find(u'\uFFFD') == std::u16string::npos) << row.what;
    }
    EXPECT_TRUE(platform::isUtf8(std::string("\0\uFFFD", 4))); // NUL, and U+FFFD that the text itself has
}

TEST(CodePage, ReplacesSurrogatesByWhatTheTargetHas)
{
    const struct
    {
        std::u16string units;
        const char* utf8;
        const char* gbk;
    } cases[] = {{{0xD83C}, "\uFFFD", "?"},
                 {{0xDF0D}, "\uFFFD", "?"},
                 {{0xDF0D, 0xD83C}, "\uFFFD\uFFFD", "??"},
                 {{0xD83C, u'a'}, "\uFFFDa", "?a"},
                 {u"\U0001F30D.", "\U0001F30D.", "??."}};
    for (const auto& row : cases) {
        EXPECT_EQ(fromUtf16(kUtf8CodePage, row.units), row.utf8);
        EXPECT_EQ(fromUtf16(kGbkCodePage, row.units), row.gbk);
    }
}

TEST(CodePage, RecodesAsTheTwoHalvesDo)
{
    for (const std::string& text : randomTexts()) {
        for (const unsigned int from : {kGbkCodePage, kUtf8CodePage})
            for (const unsigned int to : {kGbkCodePage, kUtf8CodePage})
                ASSERT_EQ(recode(from, to, text), fromUtf16(to, toUtf16(from, text))) << from << ' ' << to;
    }
}

TEST(CodePage, WritesWholeCharactersWithinTheCapacity)
{
    for (const std::string& text : randomTexts()) {
        const std::u16string units = toUtf16(kUtf8CodePage, text);
        const std::string whole = fromUtf16(kUtf8CodePage, units);
        const std::string gbk = recode(kUtf8CodePage, kGbkCodePage, text);
        for (std::size_t capacity = 0; capacity <= whole.size(); ++capacity) {
            std::string result(whole.size() + 8, '#');
            ASSERT_EQ(platform::fromUtf16(kUtf8CodePage, units.data(), units.size(), result.data(), capacity),
                      whole.size());
            // All that fits: up to the capacity, without the part of a character.
            std::size_t fits = capacity;
            while (fits < whole.size() && (static_cast<unsigned char>(whole[fits]) & 0xC0) == 0x80)
                --fits;
            ASSERT_EQ(result, whole.substr(0, fits) + std::string(result.size() - fits, '#')) << capacity;

            std::string recoded(whole.size() + 8, '#');
            ASSERT_EQ(platform::recode(kUtf8CodePage, kGbkCodePage, text.data(), text.size(), recoded.data(),
                                       capacity),
                      gbk.size());
            ASSERT_EQ(recoded.substr(capacity), std::string(recoded.size() - capacity, '#'));
            if (capacity >= gbk.size())
                ASSERT_EQ(recoded.substr(0, gbk.size()), gbk);
        }
    }
}

TEST(CodePage, KnowsTwoCodePagesOnly)
{
    EXPECT_EQ(platform::systemCodePage(), kGbkCodePage);
    for (const unsigned int unknown : {0u, 437u, 1252u, 54936u, 0xFFFFFFFFu}) {
        EXPECT_FALSE(platform::setSystemCodePage(unknown)) << unknown;
        EXPECT_EQ(platform::toUtf16(unknown, "a", 1, nullptr, 0), 0u);
        EXPECT_EQ(platform::fromUtf16(unknown, u"a", 1, nullptr, 0), 0u);
        EXPECT_EQ(platform::recode(kGbkCodePage, unknown, "a", 1, nullptr, 0), 0u);
    }
    EXPECT_EQ(platform::systemCodePage(), kGbkCodePage);
    EXPECT_TRUE(platform::setSystemCodePage(kUtf8CodePage));
    EXPECT_EQ(platform::systemCodePage(), kUtf8CodePage);
    EXPECT_TRUE(platform::setSystemCodePage(kGbkCodePage));
}

} // namespace
