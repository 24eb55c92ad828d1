#include "lumo/components/hubline/Hubline.h"
#include "tests/support/FakeComponents.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TestManager.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

namespace {

typedef std::vector<std::string> Lines;

class StartUp : public ::testing::Test
{
protected:
    StartUp() { forgetComponents(); }

    FakeChannel m_Channel;
    LogCapture m_Log;
};

const char kFailed[] = "CLumoDataMgr::initDataMgrByChannel Failed";

} // namespace

TEST_F(StartUp, StoresWhatItIsGivenAndLooksUpCompanyAndUser)
{
    for (const unsigned int timeout : {0u, 0xFFFFFFFFu}) { // neither is a default
        TestManager manager;
        FakeChannel ledger, forge; // the second throws when called
        ledger.answer("result: 0 bean { id: 7 }").answer("result: 0 bean { id: 8 }");
        m_Log.clear();
        components().calls.clear();
        EXPECT_EQ(manager.initDataMgr(&ledger, &forge, "t", "\xd3\xb0", "\xd3\xb0", timeout), INIT_SUCCESS);
        EXPECT_EQ(ledger.calls(), (Lines{"queryCompanyTableByCompanyNo {companyno: \"影\"}",
                                         "queryUserTableByUserName {username: \"影\"}"}));
        EXPECT_EQ(ledger.timeouts(), (std::vector<long long>{timeout, timeout}));
        EXPECT_EQ(manager.companyID(), 7u);
        EXPECT_EQ(manager.roleName(), QString::fromUtf8("影"));
        Lines lines = framedLines("getCompanyID", "getCompanyID");
        for (const std::string& line : framedLines("getRoleID", "getRole"))
            lines.push_back(line);
        lines.push_back(managerLine("CLumoDataMgr::initDataMgrByChannel Successed", "initDataMgr"));
        EXPECT_EQ(m_Log.lines(), lines);
        manager.newChannel(QString::fromUtf8("影:1"));
        EXPECT_EQ(components().calls, (Lines{"start 5 5", "open \xd3\xb0:1 t"}));
    }
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
        EXPECT_EQ(m_Log.lines(), (Lines{managerLine("wirecall::RpcChannel is NULL", "initDataMgr"),
                                        managerLine(kFailed, "initDataMgr")}));
        m_Channel.answer("result: 0 bean { id: 1 }");
        EXPECT_EQ(manager.getFolderID(1, 0, "on the old channel"), 1u);
        EXPECT_EQ(m_Channel.timeouts().back(), 4321);
    }
}

TEST_F(StartUp, AFailureEndsItWithTheRestStored)
{
    const struct
    {
        bool starts; ///< the transfer client
        Lines answers;
        ENUM_INIT_ERROR_CODE code;
        unsigned int companyID;
        const char* before; ///< the last line, null for a line of a look-up
    } kCases[] = {
        {false, {}, INIT_ERROR_TRANSFER_CLIENT, 0xFFFFFFFF, "bulkhaul::StartBulkhaul Failed"},
        {true, {"result: -1"}, INIT_ERROR_COMPANY, 0xFFFFFFFF, nullptr},
        {true, {"result: 0 bean { id: 7 }", "!gone"}, INIT_ERROR_ROLE, 7, nullptr},
        {true, {"bean { id: 7 }", "bean { id: 4294967295 }"}, INIT_ERROR_ROLE, 7, nullptr},
    };
    for (const auto& one : kCases) {
        components().bulkhaulStarts = one.starts;
        for (const std::string& answer : one.answers)
            m_Channel.answer(answer);
        m_Log.clear();
        TestManager manager;
        EXPECT_EQ(manager.initDataMgr(&m_Channel, &m_Channel, "t", "user", "no", 1), one.code);
        EXPECT_TRUE(m_Channel.allPlayed());
        EXPECT_EQ(manager.companyID(), one.companyID);
        EXPECT_EQ(manager.roleName(), "user");
        const Lines lines = m_Log.lines();
        EXPECT_EQ(lines.back(), managerLine(kFailed, "initDataMgr"));
        EXPECT_EQ(lines.end()[-2], one.before ? managerLine(one.before, "initDataMgr")
                                   : one.code == INIT_ERROR_COMPANY
                                       ? framedLines("getCompanyID", "getCompanyID").back()
                                       : framedLines("getRoleID", "getRole").back());
    }
}

TEST_F(StartUp, TheEndOfTheProcessEndsTheTransferClientBeforeTheObjectIsForgotten)
{
    EXPECT_EXIT(
        {
            components().onEnd = [] {
                std::cerr << "ended while the object was "
                          << (TestManager::m_Instance != nullptr ? "known" : "forgotten");
            };
            CLumoDataMgr::GetSinglePton();
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "ended while the object was known");
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
