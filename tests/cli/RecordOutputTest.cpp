#include "cli/output/RecordOutput.h"

#include "lumo/components/platform/CodePage.h"
#include "lumo/core/TextEncoding.h"

#include <gmock/gmock.h>

#include <cstring>

namespace {

using cli::Form;
using cli::RecordLists;
using testing::HasSubstr;
using testing::StartsWith;

class RecordOutput : public testing::Test
{
protected:
    void SetUp() override { platform::setSystemCodePage(platform::kGbkCodePage); }
    void TearDown() override { platform::setSystemCodePage(platform::kUtf8CodePage); }

    template <std::size_t Size>
    static void set(char (&field)[Size], const std::string& utf8)
    {
        ASSERT_TRUE(convertToMultibyte(utf8, field, Size));
    }

    /// All bytes of the record are what a text leaves that does not fit.
    static tagSatTable satImage(unsigned int id, const std::string& name)
    {
        tagSatTable image;
        std::memset(&image, 1, sizeof image);
        image.imageID = id;
        image.mainFileID = 0xFFFFFFFF;
        set(image.imageName, name);
        set(image.text1, "a\"b, \x1b");
        set(image.text2, "");
        image.presence = 1U << 1 | 1U << 6;
        image.value2 = -0.1;
        image.count1 = 0;
        image.coord.datum = 3;
        image.coord.projection = -1;
        image.coord.coordParam1 = 1e21;
        set(image.coord.coordText, "三度带");
        return image;
    }

    static cli::Value value(const tagSatTable& image, const std::string& name)
    {
        for (const cli::Field& field : cli::fieldsOf(image))
            if (field.name == name)
                return field.value;
        ADD_FAILURE() << name;
        return {};
    }

    static std::string printed(const RecordLists& lists, Form form, std::size_t width = 80, bool clip = false)
    {
        testing::internal::CaptureStdout();
        cli::printRecords(lists, form, width, clip);
        cli::flushOutput();
        return testing::internal::GetCapturedStdout();
    }
};

TEST_F(RecordOutput, EachValueHasOneFormForPeopleJsonAndCsv)
{
    const tagSatTable image = satImage(7, "影像");
    const struct
    {
        const char* name;
        const char* shown;
        cli::Json json;
        const char* plain;
    } kCases[] = {{"imageID", "7", 7, "7"},
                  {"mainFileID", "-", nullptr, ""},
                  {"imageName", "影像", "影像", "影像"},
                  {"text1", "a\"b, \x1b", "a\"b, \x1b", "a\"b, \x1b"},
                  {"text2", "-", "", ""},
                  {"text3", "(too long for its record)", nullptr, ""},
                  {"value1", "-", nullptr, ""},
                  {"value2", "-0.1", -0.1, "-0.1"},
                  {"count1", "0", 0, "0"},
                  {"count2", "-", nullptr, ""},
                  {"value12", "-", nullptr, ""},
                  {"datum", "3 (China 2000)", 3, "3"},
                  {"projection", "-", nullptr, ""},
                  {"coordParam1", "1e+21", 1e21, "1e+21"},
                  {"coordText", "三度带", "三度带", "三度带"}};
    for (const auto& one : kCases) {
        const cli::Value field = value(image, one.name);
        EXPECT_EQ(cli::shown(field), one.shown) << one.name;
        EXPECT_EQ(cli::jsonOf(field), one.json) << one.name;
        EXPECT_EQ(cli::plain(field), one.plain) << one.name;
    }
}

TEST_F(RecordOutput, CsvCellsAreQuotedWhereTheyMustBe)
{
    const std::pair<const char*, const char*> kCases[] = {
        {"", ""}, {"a b;c", "a b;c"}, {"a,b", "\"a,b\""}, {"a\"b", "\"a\"\"b\""}, {"a\nb", "\"a\nb\""}};
    for (const auto& [text, cell] : kCases)
        EXPECT_EQ(cli::csvCell(text), cell);
}

TEST_F(RecordOutput, TableHasTheColumnsThatFitAndShowSomething)
{
    RecordLists lists;
    lists.lists = {cli::listOf(QList<tagSatTable>{satImage(1, "华北平原"), satImage(20, "b\n")})};
    EXPECT_EQ(printed(lists, Form::AsTable, 45), "imageID  mainFileID  imageName  text1\n"
                                                 "1        -           华北平原   a\"b, \\x1B\n"
                                                 "20       -           b\\n        a\"b, \\x1B\n");
    EXPECT_THAT(printed(lists, Form::AsTable, 100),
                HasSubstr("text1      text3                     text4\n"));
    EXPECT_THAT(printed(lists, Form::AsTable, 100), HasSubstr("(too long f… its record)"));
    EXPECT_THAT(printed(lists, Form::AsTable, 26, true), HasSubstr("\n1        -           华…原\n"));
    EXPECT_THAT(printed(lists, Form::AsTable, 26), HasSubstr("\n1        -           华北平原\n"));
}

TEST_F(RecordOutput, ListsOfSeveralKindsShareOneJsonArrayAndOneCsvHeader)
{
    tagImageData point{};
    point.recordKind = DATA_TYPE_CTRL_POINT;
    point.body.ctrlPoint.pointID = 5;
    point.body.ctrlPoint.presence = 1U << 2;
    point.body.ctrlPoint.pointZ = 8848.86;
    RecordLists lists;
    lists.commonNames = {"kind"};
    lists.lists = {cli::listOf(QList<tagSatTable>{satImage(1, "a"), satImage(2, "b")}),
                   cli::listOf(QList<tagImageData>{point})};
    lists.lists[0].common = {"sat"};
    lists.lists[0].heading = "north/卫星影像";
    lists.lists[1].common = {"point"};
    lists.lists[1].heading = "north/控制点属性";

    const cli::Json array = cli::Json::parse(printed(lists, Form::AsJson));
    ASSERT_EQ(array.size(), 3U);
    EXPECT_EQ(array[1]["imageID"], 2);
    EXPECT_EQ(array[2], cli::Json::parse(R"({"kind": "point", "pointID": 5, "dqConID": 0, "conNumber": "",
        "pointText": "", "pointX": null, "pointY": null, "pointZ": 8848.86})"));
    const std::string csv = printed(lists, Form::AsCsv);
    EXPECT_THAT(csv, StartsWith("kind,imageID,mainFileID,imageName,text1,"));
    EXPECT_THAT(csv, HasSubstr(",coordExtra7,pointID,dqConID,conNumber,pointText,pointX,pointY,pointZ\r\n"));
    EXPECT_THAT(csv, HasSubstr("\r\nsat,2,,b,\"a\"\"b, \x1b\",,"));
    EXPECT_THAT(csv, HasSubstr("\r\npoint,,,,"));
    EXPECT_THAT(csv, testing::EndsWith(",,5,0,,,,,8848.86\r\n"));
    EXPECT_THAT(printed(lists, Form::AsTable), HasSubstr("\n\nnorth/控制点属性\npointID  dqConID"));

    cli::limit(lists, 2);
    EXPECT_TRUE(lists.cut);
    EXPECT_THAT(printed(lists, Form::AsTable),
                testing::EndsWith("\n(the first 2, as --limit says; there are more)\n"));
    EXPECT_EQ(cli::Json::parse(printed(lists, Form::AsJson)).size(), 2U);
}

TEST_F(RecordOutput, NothingFoundIsSaidInEveryForm)
{
    RecordLists lists;
    lists.lists = {cli::listOf(QList<tagCtrlPointTable>())};
    lists.whenEmpty = "(none)";
    cli::limit(lists, 1);
    EXPECT_EQ(printed(lists, Form::AsTable), "(none)\n");
    EXPECT_EQ(printed(lists, Form::AsJson), "[]\n");
    EXPECT_EQ(printed(lists, Form::AsCsv), "pointID,dqConID,conNumber,pointText,pointX,pointY,pointZ\r\n");
}

} // namespace
