#include "lumo/components/hubline/Hubline.h"
#include "tests/support/FakeComponents.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TestManager.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

typedef std::vector<std::string> Lines;

Lines initLines(const Lines& messages)
{
    Lines lines;
    for (const std::string& message : messages)
        lines.push_back(managerLine(message, "initDataMgr"));
    return lines;
}

class StartUp : public ::testing::Test
{
protected:
    StartUp() { forgetComponents(); }

    FakeChannel m_Channel;
    LogCapture m_Log;
};

const char kFailed[] = "CLumoDataMgr::initDataMgrByChannel Failed";

} // namespace

TEST_F(StartUp, StoresResolvesAndTellsOfItsSuccess)
{
    TestManager manager;
    m_Channel.answer("result: 0 bean { id: 7 }").answer("result: 0 bean { id: 8 }");
    EXPECT_EQ(manager.initDataMgr(&m_Channel, &m_Channel, "t", "user", "no", 0), INIT_SUCCESS);
    EXPECT_EQ(m_Channel.calls(), (Lines{"queryCompanyTableByCompanyNo {companyno: \"no\"}",
                                        "queryUserTableByUserName {username: \"user\"}"}));
    EXPECT_EQ(m_Channel.timeouts(), (std::vector<long long>{0, 0})) << "a limit of 0 is no default";
    EXPECT_EQ(manager.companyID(), 7u);
    EXPECT_EQ(manager.roleName(), "user");
    EXPECT_EQ(components().calls, Lines{"start 5 5"});
    Lines expected;
    for (const char* name : {"getCompanyID", "getRoleID"}) {
        const std::string logged = name == std::string("getRoleID") ? "getRole" : name;
        expected.push_back(managerLine("Enter Function : " + logged, name));
        expected.push_back(managerLine("Leave Function : " + logged, name));
    }
    expected.push_back(managerLine("CLumoDataMgr::initDataMgrByChannel Successed", "initDataMgr"));
    EXPECT_EQ(m_Log.lines(), expected);
}

TEST_F(StartUp, ANullChannelChangesNothing)
{
    for (const bool ledger : {true, false}) {
        TestManager manager(m_Channel);
        components().calls.clear();
        m_Log.clear();
        FakeChannel other;
        EXPECT_EQ(
            manager.initDataMgr(ledger ? &other : nullptr, ledger ? nullptr : &other, "t", "other", "no", 1),
            INIT_ERROR_CHANNEL_NULL);
        EXPECT_EQ(manager.roleName(), "user");
        EXPECT_TRUE(components().calls.empty());
        EXPECT_EQ(m_Log.lines(), initLines({"wirecall::RpcChannel is NULL", kFailed}));
        m_Channel.answer("result: 0 bean { id: 1 }");
        EXPECT_EQ(manager.getFolderID(1, 0, "on the old channel"), 1u);
        EXPECT_EQ(m_Channel.timeouts().back(), 4321);
    }
}

TEST_F(StartUp, TheEndOfTheProcessEndsTheTransferClientBeforeTheObjectIsForgotten)
{
    EXPECT_EXIT(
        {
            components().onEnd = [] {
                std::fprintf(stderr, "ended while the object was %s",
                             TestManager::m_Instance != nullptr ? "known" : "forgotten");
            };
            CLumoDataMgr::GetSinglePton();
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "ended while the object was known");
}

TEST_F(StartUp, TextsAreInTheCodePageAndTheForgeChannelIsLeftAlone)
{
    TestManager manager;
    FakeChannel forge; // throws when called
    m_Channel.answer("result: 0 bean { id: 7 }").answer("result: 0 bean { id: 8 }");
    EXPECT_EQ(manager.initDataMgr(&m_Channel, &forge, "t", "\xd3\xb0", "\xd3\xb0", 0xFFFFFFFF), INIT_SUCCESS);
    EXPECT_EQ(m_Channel.calls(), (Lines{"queryCompanyTableByCompanyNo {companyno: \"\\345\\275\\261\"}",
                                        "queryUserTableByUserName {username: \"\\345\\275\\261\"}"}));
    EXPECT_EQ(m_Channel.timeouts(), (std::vector<long long>{4294967295, 4294967295}))
        << "widened without a sign";
    EXPECT_EQ(manager.roleName(), QString::fromUtf8("影"));
    components().calls.clear();
    manager.newChannel(QString::fromUtf8("影:1"));
    EXPECT_EQ(components().calls, Lines{"open \xd3\xb0:1 t"});
}

TEST_F(StartUp, ATransferClientThatDoesNotStartEndsIt)
{
    components().bulkhaulStarts = false;
    TestManager manager;
    EXPECT_EQ(manager.initDataMgr(&m_Channel, &m_Channel, "t", "user", "no", 1), INIT_ERROR_TRANSFER_CLIENT);
    EXPECT_EQ(m_Log.lines(), initLines({"bulkhaul::StartBulkhaul Failed", kFailed}));
    EXPECT_EQ(manager.roleName(), "user") << "stays stored";
    EXPECT_TRUE(m_Channel.calls().empty());
}

TEST_F(StartUp, AnUnknownCompanyOrUserEndsItWithTheRestStored)
{
    TestManager manager;
    m_Channel.answer("result: -1");
    EXPECT_EQ(manager.initDataMgr(&m_Channel, &m_Channel, "t", "user", "no", 1), INIT_ERROR_COMPANY);
    EXPECT_EQ(manager.companyID(), 0xFFFFFFFF);
    EXPECT_EQ(manager.roleName(), "user");
    EXPECT_EQ(m_Log.lines().back(), initLines({kFailed})[0]);
    m_Channel.answer("result: 0 bean { id: 7 }").answer("!gone");
    EXPECT_EQ(manager.initDataMgr(&m_Channel, &m_Channel, "t", "other", "no", 1), INIT_ERROR_ROLE);
    EXPECT_EQ(manager.companyID(), 7u);
    EXPECT_EQ(manager.roleName(), "other");
    EXPECT_EQ(m_Log.lines().back(), initLines({kFailed})[0]);
}

TEST_F(StartUp, StatusLinesOfTheTransferClientReachTheChannelClientsLogger)
{
    TestManager manager(m_Channel);
    Lines seen;
    hubline::Logger::Instance(true)->toCallback(
        [&](int level, const std::string& text) { seen.push_back(std::to_string(level) + text); });
    m_Log.clear();
    components().status(2, "unchanged");
    hubline::Logger::Instance(true)->toCallback(hubline::Logger::Callback());
    EXPECT_EQ(seen, Lines{"2unchanged"});
    EXPECT_TRUE(m_Log.lines().empty());
}

TEST_F(StartUp, ANewChannelIsJudgedByItsCode)
{
    TestManager manager(m_Channel);
    components().opened = boost::make_shared<FakeChannel>();
    components().current = boost::make_shared<FakeChannel>();
    const struct
    {
        int code;
        const char* line;
    } cases[] = {
        {0, "hubline::NewChannel Successed!"},      {1, "Not Call StartHubline Server!"},
        {2, "Address is same to StartHubline!"},    {3, "Connect Server Failed!"},
        {4, "Token Authentication Failure!"},       {5, "hubline::NewChannel Unknown Error!"},
        {-1, "hubline::NewChannel Unknown Error!"},
    };
    for (const auto& c : cases) {
        m_Log.clear();
        components().calls.clear();
        components().code = c.code;
        EXPECT_EQ(manager.newChannel("box:1"), c.code == 2 ? components().current : components().opened);
        EXPECT_EQ(m_Log.lines(), Lines{managerLine(c.line, "newChannel")});
        EXPECT_EQ(components().calls, Lines{"open box:1 t0ken"});
    }
}
