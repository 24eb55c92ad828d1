#include "tests/support/TestManager.h"

#include <gtest/gtest.h>

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
