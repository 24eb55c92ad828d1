#include "cli/output/DisplayText.h"
#include "cli/output/Output.h"

#include <gtest/gtest.h>

namespace {

TEST(DisplayText, WidthCountsColumnsNotBytes)
{
    const struct
    {
        const char* text;
        std::size_t width;
    } kCases[] = {{"", 0}, {"abc", 3}, {"影像", 4}, {"é", 1}, {"e\u0301", 1}, {"ｱ", 1}, {"Ａ", 2}, {"🌍", 2}};
    for (const auto& one : kCases)
        EXPECT_EQ(cli::displayWidth(one.text), one.width) << one.text;
}

TEST(DisplayText, ClippedTextKeepsBothEndsAndFits)
{
    const struct
    {
        const char* text;
        std::size_t columns;
        const char* clipped;
    } kCases[] = {{"abc", 3, "abc"}, {"abcdefg", 5, "ab…fg"},  {"abcdefg", 4, "a…fg"}, {"ab", 1, "…"},
                  {"ab", 0, ""},     {"影像影像", 5, "影…像"}, {"影像影像", 4, "…像"}, {"影", 1, "…"}};
    for (const auto& one : kCases)
        EXPECT_EQ(cli::clipped(one.text, one.columns), one.clipped) << one.text << one.columns;
}

TEST(Table, ColumnsLineUpWhateverTheScript)
{
    cli::Table table({"NAME", "BOX", "ROOT"});
    table.add({"earth", "box", "/a"});
    table.add({"青藏高原", "b\n", "/b"});
    EXPECT_EQ(table.text(), "NAME      BOX  ROOT\n"
                            "earth     box  /a\n"
                            "青藏高原  b\\n  /b\n");
    table.add({"x", "a text that is longer than all", "a path that is longer"});
    EXPECT_EQ(table.text(40), "NAME      BOX             ROOT\n"
                              "earth     box             /a\n"
                              "青藏高原  b\\n             /b\n"
                              "x         a text…han all  a path… longer\n");
    EXPECT_NE(table.text(1).find("x         a t… all  a p…nger\n"), std::string::npos) << table.text(1);
}

TEST(Table, EmptyHeadingsAreNotShown)
{
    cli::Table table({"", ""});
    table.add({"Name", "x"});
    EXPECT_EQ(table.text(), "Name  x\n");
}

TEST(JsonText, HoldsNoControlCharacterRawAndReadsBack)
{
    const cli::Json document{{"name", "a\n\x1b\x7f\u0085影像\xff"}};
    const std::string text = cli::jsonText(document);
    EXPECT_NE(text.find("\\u007f\\u0085影像"), std::string::npos) << text;
    for (const char byte : text)
        EXPECT_TRUE(byte == '\n' || static_cast<unsigned char>(byte) >= 0x20);
    EXPECT_EQ(cli::Json::parse(text)["name"], "a\n\x1b\x7f\u0085影像\ufffd");
}

} // namespace
