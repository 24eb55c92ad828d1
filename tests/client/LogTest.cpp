#include "client/Log.h"
#include "lumo/components/logger/LumoLogger.h"

#include <gtest/gtest.h>

namespace {

using Kind = lumo::internal::Reason::Kind;

std::string entry(const std::string& message)
{
    return "Sun Nov 22 21:00:00 2026\n [INFO] " + message +
           " File:LumoDataMgr, Func:CLumoDataMgr::getDisk, Line:7\r\n";
}

TEST(Log, ReasonIsReadFromTheLinesOfFailedCallsOnly)
{
    const struct
    {
        std::string entry;
        Kind kind;
        const char* operation;
        const char* text;
    } kCases[] = {
        {entry("queryDataAddress Error : Deadline Exceeded"), Kind::CallFailed, "queryDataAddress",
         "Deadline Exceeded"},
        {entry("queryX Error : odd File: Result NULL"), Kind::CallFailed, "queryX", "odd File: Result NULL"},
        {entry("queryX Error : "), Kind::CallFailed, "queryX", ""},
        {entry("queryX Result Error"), Kind::ErrorResult, "queryX", ""},
        {entry("queryX Result NULL"), Kind::NullResult, "queryX", ""},
        {"time\n [INFO] queryX Error : cut off", Kind::CallFailed, "queryX", "cut off"},
        {entry("bulkhaul::Download Failed : /a/b c"), Kind::FileFailed, "bulkhaul::Download", "/a/b c"},
        {entry("Copy File Failed : /a/b!"), Kind::FileFailed, "Copy", "/a/b"},
        {entry("bulkhaul::Upload Failed!"), Kind::None, "", ""},
        {entry("Enter Function : getDisk"), Kind::None, "", ""},
        {entry("CLumoDataMgr::initDataMgrByChannel Failed"), Kind::None, "", ""},
        {"", Kind::None, "", ""},
        {" [INFO] ", Kind::None, "", ""},
    };
    for (const auto& one : kCases) {
        const lumo::internal::Reason reason = lumo::internal::reasonOf(one.entry);
        EXPECT_EQ(reason.kind, one.kind) << one.entry;
        EXPECT_EQ(reason.operation, one.operation) << one.entry;
        EXPECT_EQ(reason.text, one.text) << one.entry;
    }
}

TEST(Log, EachCallHasItsOwnAnswerThoughTheNextBeginsAtOnce)
{
    lumo::internal::Log& log = lumo::internal::Log::instance();
    log.open({});
    const auto write = [](const std::string& message) {
        const std::string text = entry(message);
        CLumoLogger::GetSinglePton()->write(text.c_str(), static_cast<int>(text.size()));
    };
    const auto first = log.expect("fileCopy");
    ASSERT_TRUE(first);
    write("fileCopy Error : full");
    EXPECT_FALSE(log.expect("fileCopy")) << "the first has no end";
    write("Leave Function : fileCopy");
    const auto second = log.expect("fileCopy");
    ASSERT_TRUE(second);
    EXPECT_TRUE(log.await(first, 1).ended);
    EXPECT_EQ(log.await(first, 1).errors, std::vector<std::string>{"full"});
    EXPECT_FALSE(log.await(second, 1).ended);
    write("Leave Function : fileCopy");
    EXPECT_TRUE(log.await(second, 1).ended);
    log.close();
}

} // namespace
