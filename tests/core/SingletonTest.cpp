#include "tests/support/LogCapture.h"
#include "tests/support/TestManager.h"

#include <gtest/gtest.h>

#include <ctime>
#include <thread>

TEST(Singleton, ThreadsThatAskAtOnceGetOneObject)
{
    EXPECT_EQ(TestManager::m_Instance, nullptr) << "not before its first use";
    CLumoDataMgr* found[8] = {};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&found, i] {
            found[i] = i % 2 == 0 ? CLumoDataMgr::GetSinglePton() : &CLumoDataMgr::GetSingleTon();
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const CLumoDataMgr* manager : found)
        EXPECT_EQ(manager, found[0]);
    EXPECT_EQ(found[0]->companyID(), 0xFFFFFFFF);
    EXPECT_EQ(found[0]->roleName(), "");
    EXPECT_STREQ(found[0]->metaObject()->className(), "CLumoDataMgr");
}

TEST(LogLine, TellsTheLocalTime)
{
    LogCapture log;
    FakeChannel channel;
    TestManager manager(channel);
    ASSERT_FALSE(log.rawLines().empty());
    std::tm parsed = {};
    ASSERT_NE(strptime(log.rawLines().back().c_str(), "%a %b %d %H:%M:%S %Y", &parsed), nullptr);
    parsed.tm_isdst = -1;
    EXPECT_LT(std::abs(std::difftime(std::mktime(&parsed), std::time(nullptr))), 60);
}

TEST(LogLine, ALongMessageIsCutAt4096Bytes)
{
    LogCapture log;
    FakeChannel channel;
    TestManager manager(channel);
    tagDiskTable disk;
    for (const std::size_t length : {3900u, 4096u, 100000u}) {
        log.clear();
        channel.answer("!" + std::string(length, 'x'));
        manager.getDisk(1, disk);
        const std::string line = log.rawLines().at(1);
        const bool whole = length == 3900;
        EXPECT_EQ(line.size() == 4096, !whole);
        EXPECT_EQ(line.substr(line.size() - 2), whole ? "\r\n" : "xx");
    }
}
