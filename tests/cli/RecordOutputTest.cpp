#include "cli/output/RecordOutput.h"
#include "cli/output/Csv.h"

#include <gmock/gmock.h>

namespace {

using cli::Form;
using cli::RecordLists;
using testing::HasSubstr;
using testing::StartsWith;

using lumo::Record;
using Role = Record::Field::Role;

Record satImage(unsigned int id, const std::string& name)
{
    return {Record::Kind::Satellite,
            {{"imageID", id, Role::Leading},
             {"mainFileID", Record::Absent(), Role::Leading},
             {"imageName", name, Role::Leading},
             {"text1", std::string("a\"b, \x1b"), Role::Main},
             {"text2", std::string(), Role::Main},
             {"text3", Record::TooLong(), Role::Main},
             {"value1", Record::Absent(), Role::Main},
             {"value2", -0.1, Role::Main},
             {"count1", 0, Role::Main},
             {"datum", Record::Code{3, "China 2000"}, Role::Main},
             {"coordParam1", 1e21, Role::Detail}}};
}

cli::RecordList listOf(std::vector<Record> records)
{
    cli::RecordList list;
    for (const Record::Field& field : records.front().fields())
        list.names.push_back(field.name);
    list.records = std::move(records);
    return list;
}

std::string printed(const RecordLists& lists, Form form, std::size_t width = 80, bool clip = false)
{
    testing::internal::CaptureStdout();
    cli::printRecords(lists, form, width, clip);
    cli::flushOutput();
    return testing::internal::GetCapturedStdout();
}

TEST(RecordOutput, EachValueHasOneFormForPeopleJsonAndCsv)
{
    const Record image = satImage(7, "影像");
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
                  {"datum", "3 (China 2000)", 3, "3"},
                  {"coordParam1", "1e+21", 1e21, "1e+21"}};
    for (const auto& one : kCases) {
        const Record::Value& value = *image.find(one.name);
        EXPECT_EQ(cli::shown(value), one.shown) << one.name;
        EXPECT_EQ(cli::jsonOf(value), one.json) << one.name;
        EXPECT_EQ(cli::plain(value), one.plain) << one.name;
    }
}

TEST(RecordOutput, CsvCellsAreQuotedWhereTheyMustBe)
{
    const std::pair<const char*, const char*> kCases[] = {
        {"", ""}, {"a b;c", "a b;c"}, {"a,b", "\"a,b\""}, {"a\"b", "\"a\"\"b\""}, {"a\nb", "\"a\nb\""}};
    for (const auto& [text, cell] : kCases)
        EXPECT_EQ(cli::csvCell(text), cell);
}

TEST(RecordOutput, TableHasTheColumnsThatFitAndShowSomething)
{
    RecordLists lists;
    lists.lists = {listOf({satImage(1, "华北平原"), satImage(20, "b\n")})};
    EXPECT_EQ(printed(lists, Form::AsTable, 45), "imageID  mainFileID  imageName  text1\n"
                                                 "1        -           华北平原   a\"b, \\x1B\n"
                                                 "20       -           b\\n        a\"b, \\x1B\n");
    EXPECT_THAT(printed(lists, Form::AsTable, 100),
                HasSubstr("text1      text3                     value2  count1  datum\n"));
    EXPECT_THAT(printed(lists, Form::AsTable, 100), HasSubstr("(too long f… its record)"));
    EXPECT_THAT(printed(lists, Form::AsTable, 26, true), HasSubstr("\n1        -           华…原\n"));
    EXPECT_THAT(printed(lists, Form::AsTable, 26), HasSubstr("\n1        -           华北平原\n"));
}

TEST(RecordOutput, ListsOfSeveralKindsShareOneJsonArrayAndOneCsvHeader)
{
    const Record point = {Record::Kind::Point,
                          {{"pointID", 5U, Role::Leading},
                           {"pointX", Record::Absent(), Role::Main},
                           {"pointZ", 8848.86, Role::Main}}};
    RecordLists lists;
    lists.commonNames = {"kind"};
    lists.lists = {listOf({satImage(1, "a"), satImage(2, "b")}), listOf({point})};
    lists.lists[0].common = {"sat"};
    lists.lists[0].heading = "north/卫星影像";
    lists.lists[1].common = {"point"};
    lists.lists[1].heading = "north/控制点属性";

    const cli::Json array = cli::Json::parse(printed(lists, Form::AsJson));
    ASSERT_EQ(array.size(), 3U);
    EXPECT_EQ(array[1]["imageID"], 2);
    EXPECT_EQ(array[2],
              cli::Json::parse(R"({"kind": "point", "pointID": 5, "pointX": null, "pointZ": 8848.86})"));
    const std::string csv = printed(lists, Form::AsCsv);
    EXPECT_THAT(csv, StartsWith("kind,imageID,mainFileID,imageName,text1,"));
    EXPECT_THAT(csv, HasSubstr(",coordParam1,pointID,pointX,pointZ\r\n"));
    EXPECT_THAT(csv, HasSubstr("\r\nsat,2,,b,\"a\"\"b, \x1b\",,"));
    EXPECT_THAT(csv, HasSubstr("\r\npoint,,,,"));
    EXPECT_THAT(csv, testing::EndsWith(",,5,,8848.86\r\n"));
    EXPECT_THAT(printed(lists, Form::AsTable),
                HasSubstr("\n\nnorth/控制点属性\npointID  pointZ\n5        8848.86\n"));

    cli::limit(lists, 2);
    EXPECT_TRUE(lists.cut);
    EXPECT_THAT(printed(lists, Form::AsTable),
                testing::EndsWith("\n(the first 2, as --limit says; there are more)\n"));
    EXPECT_EQ(cli::Json::parse(printed(lists, Form::AsJson)).size(), 2U);
}

TEST(RecordOutput, NothingFoundIsSaidInEveryForm)
{
    RecordLists lists;
    lists.lists = {cli::listOf(Record::Kind::Point, {})};
    lists.whenEmpty = "(none)";
    cli::limit(lists, 1);
    EXPECT_EQ(printed(lists, Form::AsTable), "(none)\n");
    EXPECT_EQ(printed(lists, Form::AsJson), "[]\n");
    EXPECT_EQ(printed(lists, Form::AsCsv), "pointID,dqConID,conNumber,pointText,pointX,pointY,pointZ\r\n");
}

} // namespace
