#include "cli/base/ExitCode.h"
#include "cli/output/Csv.h"

#include "lumo/client/Error.h"
#include "lumo/client/Images.h"

#include <gmock/gmock.h>

namespace {

using testing::HasSubstr;
using Cells = std::vector<std::string>;

TEST(Csv, ReadsEveryFormOfRfc4180)
{
    const struct
    {
        std::string text;
        std::vector<std::pair<std::size_t, Cells>> rows; ///< each with its line
    } kCases[] = {
        {"", {}},
        {"\xEF\xBB\xBF"
         "a,b\r\n1,2",
         {{1, {"a", "b"}}, {2, {"1", "2"}}}},
        {"a,b\n\n,\n\r\n名, \n", {{1, {"a", "b"}}, {3, {"", ""}}, {5, {"名", " "}}}},
        {"a,b\n\"1,\"\"x\"\"\",\"two\r\nlines\n\"\r\n\"\",\"\"\"\"",
         {{1, {"a", "b"}}, {2, {"1,\"x\"", "two\r\nlines\n"}}, {5, {"", "\""}}}},
        {"a\rb\n'", {{1, {"a\rb"}}, {2, {"'"}}}},
    };
    for (const auto& one : kCases) {
        std::vector<std::pair<std::size_t, Cells>> rows;
        for (const cli::CsvRow& row : cli::parseCsv(one.text, "f"))
            rows.emplace_back(row.line, row.cells);
        EXPECT_EQ(rows, one.rows) << one.text;
    }
}

template <class Function>
void expectRefusal(Function function, const std::string& message)
{
    try {
        function();
        ADD_FAILURE() << message;
    } catch (const cli::Failure& failure) {
        EXPECT_EQ(failure.code(), cli::ExitCode::WrongUse);
        EXPECT_THAT(failure.what(), HasSubstr(message));
    }
}

TEST(Csv, RefusesOtherFormsByTheirLine)
{
    for (const auto& [text, message] :
         std::vector<std::pair<std::string, std::string>>{{"a,b\n1\n", "f:2: 1 cells, but the header has 2"},
                                                          {"a\n1,2", "f:2: 2 cells"},
                                                          {"a\n\n1\"2", "f:3: a quote in a cell"},
                                                          {"a\n\"1\n\n", "f:2: a quoted cell has no end"},
                                                          {"a\n\"1\n2\" \n", "f:3: text after the quote"}})
        expectRefusal([&text = text] { cli::parseCsv(text, "f"); }, message);
}

TEST(RecordFields, RefusesWhatTheFormOfARegistrationHasNoRoomFor)
{
    const std::pair<const char*, const char*> kCarried[] = {
        {"text1", ""}, {"text_2", "it's"}, {"V3", "a=b="}, {"k", "'名'"}, {"l", "="}};
    for (const auto& [key, value] : kCarried)
        EXPECT_NO_THROW(lumo::Images::check(lumo::Images::Fields{{key, value}})) << key;
    const std::tuple<std::string, std::string, const char*> kRefused[] = {
        {"", "1", "is not a field"},
        {"a b", "1", "is not a field"},
        {"a,b", "1", "is not a field"},
        {"名", "1", "is not a field"},
        {"k", "1,2", "a comma"},
        {"k", "a='b", "a quote after an equals sign"},
        {"k", std::string("a\0b", 3), "a NUL"},
        {"k", "\xff", "not UTF-8"}};
    for (const auto& [key, value, message] : kRefused) {
        try {
            lumo::Images::check(lumo::Images::Fields{{key, value}});
            ADD_FAILURE() << message;
        } catch (const lumo::Error& error) {
            EXPECT_EQ(error.kind(), lumo::Error::Kind::WrongUse);
            EXPECT_THAT(error.what(), HasSubstr(message));
        }
    }
}

} // namespace
