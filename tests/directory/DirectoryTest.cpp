#include "tests/support/MethodTable.h"

namespace {

const char kBean[] =
    "bean { version_text_1: '一' version_text_4: '3' app_full_path: '/一' version_text_6: '' }";
const char kInfo[] = "ok \xd2\xbb,kept,3,kept,"; // an absent text is kept, an empty one taken
const QString kOne = QString::fromUtf8("一");
#define TEST_ONE "\"\\344\\270\\200\"" // as a request has it

using Areas = QMap<unsigned int, QString>;
using Boxes = QMap<QString, QString>;

const std::vector<Method>& methods()
{
    static const std::vector<Method> all = {
        method("getCompanyNo", Verdict::judged, "queryCompanyTableByCompanyID {company_id: 4294967294}",
               "bean { companyno: '一' }", "一", [](auto& m) { return m.getCompanyNo(4294967294u); }),
        method<Areas>(
            "getNationalArea", Verdict::judged, "queryNationalAreaByAreaID {area_id: 3}",
            "nationalareas { area_id: 7 area_name: 'a' } nationalareas { area_id: 9 area_name: 'b' } "
            "nationalareas { area_id: 7 area_name: '一' } nationalareas {}",
            "ok 0=;7=一;9=b;kept=kept;", [](auto& m, auto& areas) { return m.getNationalArea(3, areas); }),
        method<Boxes>("getKestaList", Verdict::planned, "getKestaList {commoncode: \"company\"}",
                      "boxlist { box { box_key: 'k' box_value: 'a' } } boxlist {} "
                      "boxlist { box { box_key: 'k' box_value: '一' } }",
                      "ok =;k=一;kept=kept;", [](auto& m, auto& boxes) { return m.getKestaList(boxes); }),
        method("getKestaIP", Verdict::planned, "getKestaInfo {code: " TEST_ONE "}",
               "info { address: 'box:1' }", "box:1", [](auto& m) { return m.getKestaIP(kOne); }),
        method<tagVersionInfo>(
            "getVersionBySoftID", Verdict::accepted,
            "queryVersionByVersionNoAndProgramNo {programno: " TEST_ONE " versionno: \"2\"}", kBean, kInfo,
            [](auto& m, auto& info) { return m.getVersionBySoftID("\xd2\xbb", "2", info); }),
        method<tagVersionInfo>(
            "getVersionByAppID", Verdict::accepted,
            "queryVersionByVersionNoAndModuleNo {moduleno: \"m\" versionno: " TEST_ONE "}", kBean, kInfo,
            [](auto& m, auto& info) { return m.getVersionByAppID("m", "\xd2\xbb", info); }),
        method<tagVersionInfo>("getLatestVersionBySoftID", Verdict::accepted,
                               "checkNewVersion {programno: \"p\"}", "", "ok kept,kept,kept,kept,kept",
                               [](auto& m, auto& info) { return m.getLatestVersionBySoftID("p", info); }),
        method<tagVersionInfo>("getLatestVersionByAppID", Verdict::accepted,
                               "checkNewVersionByModuleNo {moduleno: \"m\"}",
                               "bean { version_text_2: '2' version_text_5: '4' }", "ok kept,2,kept,4,kept",
                               [](auto& m, auto& info) { return m.getLatestVersionByAppID("m", info); }),
        method("getAppFullPathBySoftID", Verdict::accepted,
               "queryVersionByVersionNoAndProgramNo {programno: \"p\" versionno: \"2\"}", kBean, "/一",
               [](auto& m) { return m.getAppFullPathBySoftID("p", "2"); }),
        method("getAppFullPathByAppID", Verdict::accepted,
               "queryVersionByVersionNoAndModuleNo {moduleno: \"m\" versionno: " TEST_ONE "}", "", "",
               [](auto& m) { return m.getAppFullPathByAppID("m", kOne); }),
    };
    return all;
}

class Directory : public MethodTable
{
};

} // namespace

TEST_F(Directory, MethodsAskAndJudgeAsTheirTableSays)
{
    run(methods());
}

TEST_F(Directory, AVersionTextOfAnyLengthArrivesWhole)
{
    tagVersionInfo info;
    m_Channel.answer("result: 0 bean { version_text_6: '" + std::string(70000, 'x') + "' }");
    EXPECT_TRUE(m_Manager.getLatestVersionBySoftID("p", info));
    EXPECT_EQ(info.text5, std::string(70000, 'x'));
}
