#ifndef LUMO_TESTS_SUPPORT_TESTMANAGER_H
#define LUMO_TESTS_SUPPORT_TESTMANAGER_H

#include "lumo/core/LumoDataMgr.h"
#include "tests/support/FakeChannel.h"

/// A manager of the test's own, ready to call over a fake channel as company 7, user 8, within 4321 ms.
class TestManager : public CLumoDataMgr
{
public:
    TestManager() = default;
    explicit TestManager(FakeChannel& channel)
    {
        channel.answer("result: 0 bean { id: 7 }").answer("result: 0 bean { id: 8 }");
        EXPECT_EQ(initDataMgr(&channel, &channel, "t0ken", "user", "company", 4321), INIT_SUCCESS);
        channel.forgetCalls();
    }

    using CLumoDataMgr::getAdsImageDataFromBean;
    using CLumoDataMgr::getAppFullPathByAppID;
    using CLumoDataMgr::getAppFullPathBySoftID;
    using CLumoDataMgr::getCommentImageFromBean;
    using CLumoDataMgr::getCommentInfoFromBean;
    using CLumoDataMgr::getCtrlFileDataFromBean;
    using CLumoDataMgr::getCtrlPointDataFromBean;
    using CLumoDataMgr::getDataFromBean;
    using CLumoDataMgr::getDataTypeFromBean;
    using CLumoDataMgr::getDemDataFromBean;
    using CLumoDataMgr::getDiskFromBean;
    using CLumoDataMgr::getDlgDataFromBean;
    using CLumoDataMgr::getDomDataFromBean;
    using CLumoDataMgr::getDsmDataFromBean;
    using CLumoDataMgr::getFileFromBean;
    using CLumoDataMgr::getFileFullPath;
    using CLumoDataMgr::getFolderFromBean;
    using CLumoDataMgr::getFolderFullPath;
    using CLumoDataMgr::getKFImageDataFromBean;
    using CLumoDataMgr::getSatImageDataFromBean;
    using CLumoDataMgr::m_Instance;
    using CLumoDataMgr::newChannel;
};

#endif
