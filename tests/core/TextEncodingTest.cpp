#include "lumo/core/TextEncoding.h"

#include "lumo/components/platform/CodePage.h"
#include "lumo/core/CStringCodec.h"

#include <gtest/gtest.h>

#include <QTextCodec>

#include <string>

namespace {

const std::string kUtf8 = "DOM\u5F71\u50CF\u6570\u636E"; // as GBK:
const std::string kGbk = "DOM\xD3\xB0\xCF\xF1\xCA\xFD\xBE\xDD";

/// The system code page is UTF-8 while it lives.
struct Utf8System
{
    Utf8System() { platform::setSystemCodePage(platform::kUtf8CodePage); }
    ~Utf8System() { platform::setSystemCodePage(platform::kGbkCodePage); }
};

std::string repeated(const char* text, int times)
{
    std::string result;
    while (times-- > 0)
        result += text;
    return result;
}

/// Converts into a buffer of `size` bytes '#' with a guard behind it.
void expectFilled(const std::string& text, int size, bool fits, const std::string& expected)
{
    const auto bytes = static_cast<std::size_t>(size);
    std::string buffer(bytes + 8, '#');
    EXPECT_EQ(convertToMultibyte(text, buffer.data(), size), fits);
    std::string whole =
        fits ? expected + std::string(bytes - expected.size(), '\0') : std::string(bytes, '#');
    EXPECT_EQ(buffer, whole + std::string(8, '#'));
}

TEST(TextEncoding, FillsABufferWhollyOrLeavesItUntouched)
{
    const struct
    {
        const char* what;
        std::string text;
        int size;
        bool fits;
        std::string result;
    } cases[] = {
        {"empty in 2", "", 2, true, ""},
        {"empty in 1", "", 1, false, ""},
        {"empty in 0", "", 0, false, ""},
        {"one in 3", "a", 3, true, "a"},
        {"one in 2", "a", 2, false, ""},
        {"126 bytes in 128", std::string(126, 'a'), 128, true, std::string(126, 'a')},
        {"127 bytes in 128", std::string(127, 'a'), 128, false, ""},
        {"63 characters of two bytes in 128", repeated("\u4E2D", 63), 128, true, repeated("\xD6\xD0", 63)},
        {"64 characters of two bytes in 128", repeated("\u4E2D", 64), 128, false, ""},
        {"longer in UTF-8 than the buffer", kUtf8, 13, true, kGbk},
        {"the same, one byte too small", kUtf8, 12, false, ""},
        {"up to the first NUL", std::string("ab\0cdefgh", 9), 4, true, "ab"},
        {"nothing ahead of the first NUL", std::string("\0cd", 3), 2, true, ""},
        {"characters that GBK lacks", "a\U0001F30Db\u0E01", 16, true, "a??b?"},
        {"bytes that do not decode", "\xE4\xB8\xFF", 16, true, "???"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.what);
        expectFilled(row.text, row.size, row.fits, row.result);
    }
}

TEST(TextEncoding, AppliesTheSameLimitToUtf8)
{
    const Utf8System utf8;
    const std::string world = "\U0001F30D";
    expectFilled(world, 6, true, world);
    expectFilled(world, 5, false, "");
    // Three bytes for each that does not decode.
    expectFilled("\xFF\xFF", 8, true, "\uFFFD\uFFFD");
    expectFilled("\xFF\xFF", 7, false, "");
}

TEST(TextEncoding, ConvertsBothWays)
{
    const struct
    {
        std::string utf8, gbk;
    } cases[] = {
        {"", ""},
        {kUtf8, kGbk},
        {"\u20AC", "\x80"},
        {repeated("\u4E2Da", 5000), repeated("\xD6\xD0"
                                             "a",
                                             5000)},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(convertToMultibyte(row.utf8), row.gbk);
        EXPECT_EQ(convertToUtf8(row.gbk), row.utf8);
    }
    EXPECT_EQ(convertToMultibyte(std::string("ab\0cd", 5)), "ab");
    EXPECT_EQ(convertToUtf8(std::string("ab\0cd", 5)), "ab");
    EXPECT_EQ(convertToMultibyte("\uD55C\U0001F30D"), "???");
    EXPECT_EQ(convertToUtf8("\xD6"), "\uFFFD");
    EXPECT_EQ(convertToUtf8("\xD6!\xD0 "), "\uFFFD!\uFFFD ");
}

TEST(CStringCodec, IsTheSystemCodePageUnlessOneIsChosen)
{
    const QString text = QString::fromUtf8(kUtf8.c_str());
    EXPECT_EQ(CLumoCStringCodec::fromAscii(kGbk.c_str()), text);
    EXPECT_EQ(CLumoCStringCodec::toStdString(text), kGbk);
    {
        const Utf8System utf8;
        EXPECT_EQ(CLumoCStringCodec::fromAscii(kUtf8.c_str()), text);
        EXPECT_EQ(CLumoCStringCodec::toStdString(text), kUtf8);
    }
    CLumoCStringCodec::setCodec(QTextCodec::codecForName("Big5"));
    EXPECT_EQ(CLumoCStringCodec::toStdString(QString::fromUtf8("\u5F71")), "\xBC\x76");
    EXPECT_EQ(CLumoCStringCodec::fromAscii("\xBC\x76"), QString::fromUtf8("\u5F71"));
    CLumoCStringCodec::setCodec(nullptr);
    EXPECT_EQ(CLumoCStringCodec::toStdString(text), kGbk);
}

TEST(CStringCodec, TakesNothingForAnEmptyText)
{
    EXPECT_EQ(CLumoCStringCodec::fromAscii(nullptr), QString());
    EXPECT_EQ(CLumoCStringCodec::fromAscii(""), QString());
    EXPECT_EQ(CLumoCStringCodec::toStdString(QString()), "");
}

} // namespace
