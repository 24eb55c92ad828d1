#include "client/Log.h"
#include "lumo/components/logger/LumoLogger.h"

#include <gtest/gtest.h>

namespace {

using ReasonKind = lumo::internal::Reason::Kind;

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
        ReasonKind kind;
        const char* operation;
        const char* text;
    } kCases[] = {
        {entry("queryDataAddress Error : Deadline Exceeded"), ReasonKind::CallFailed, "queryDataAddress",
         "Deadline Exceeded"},
        {entry("queryX Error : odd File: Result NULL"), ReasonKind::CallFailed, "queryX",
         "odd File: Result NULL"},
        {entry("queryX Error : "), ReasonKind::CallFailed, "queryX", ""},
        {entry("queryX Result Error"), ReasonKind::ErrorResult, "queryX", ""},
        {entry("queryX Result NULL"), ReasonKind::NullResult, "queryX", ""},
        {"time\n [INFO] queryX Error : cut off", ReasonKind::CallFailed, "queryX", "cut off"},
        {entry("bulkhaul::Download Failed : /a/b c"), ReasonKind::FileFailed, "bulkhaul::Download", "/a/b c"},
        {entry("Copy File Failed : /a/b!"), ReasonKind::FileFailed, "Copy", "/a/b"},
        {entry("bulkhaul::Upload Failed!"), ReasonKind::None, "", ""},
        {entry("Enter Function : getDisk"), ReasonKind::None, "", ""},
        {entry("CLumoDataMgr::initDataMgrByChannel Failed"), ReasonKind::None, "", ""},
        {"", ReasonKind::None, "", ""},
        {" [INFO] ", ReasonKind::None, "", ""},
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
    EXPECT_TRUE(log.expect("fileCopy"));
    log.expectNothing();
    EXPECT_TRUE(log.expect("fileCopy")) << "the call was not made";
    log.expectNothing();
    log.close();
}

} // namespace
