#include "tests/support/MethodTable.h"

#include <QVariant>

namespace {

const Variant kLookedUpText = {"", "", "", true, true};
const Variant kRecord = {"0", "0", "2", true, true};
const Variant kBool = {"0", "0", "0", false, false};
const Variant kText = {"", "", "", false, false};
const Variant kPlannedBool = {"0", "0", "0", false, false, true};
const Variant kPlannedText = {"", "", "", false, false, true};

/// A version record that holds "kept" everywhere, told with its result on success.
std::string version(const std::function<bool(tagVersionInfo&)>& get)
{
    tagVersionInfo info = {"kept", "kept", "kept", "kept", "kept"};
    const bool result = get(info);
    const std::string texts =
        info.text1 + "," + info.text2 + "," + info.text3 + "," + info.text4 + "," + info.text5;
    EXPECT_TRUE(result || texts == "kept,kept,kept,kept,kept") << texts;
    return std::to_string(result) + (result ? ":" + texts : "");
}

/// The entries of a map beside the entry of the test's own, which must stay.
template <class Key>
std::string told(int result, QMap<Key, QString> map, const Key& own)
{
    EXPECT_EQ(map.take(own), "own");
    std::string text = std::to_string(result);
    for (auto entry = map.constBegin(); entry != map.constEnd(); ++entry)
        text += ":" + QVariant(entry.key()).toString().toStdString() + "=" + entry.value().toStdString();
    return text;
}

const char kBean[] =
    "bean { version_text_1: '\xe4\xb8\x80' version_text_4: '3' app_full_path: '/\xe4\xb8\x80' "
    "version_text_6: '' }";
const char kInfo[] = "1:\xd2\xbb,kept,3,kept,"; // an absent text is kept, an empty one taken

const std::vector<Method>& methods()
{
    static const std::vector<Method> all = {
        {"getCompanyNo", "getCompanyNo", kLookedUpText,
         "queryCompanyTableByCompanyID {company_id: 4294967294}", "bean { companyno: '\xe4\xb8\x80' }",
         "\xe4\xb8\x80",
         [](TestManager& manager) { return manager.getCompanyNo(4294967294u).toStdString(); }},
        {"getNationalArea", "getNationalArea", kRecord, "queryNationalAreaByAreaID {area_id: 3}",
         "nationalareas { area_id: 7 area_name: 'a' } nationalareas { area_id: 9 area_name: 'b' } "
         "nationalareas { area_id: 7 area_name: '\xe4\xb8\x80' }",
         "1:7=\xe4\xb8\x80:9=b",
         [](TestManager& manager) {
             QMap<unsigned int, QString> areas{{1, "own"}};
             const int result = manager.getNationalArea(3, areas);
             return told(result, areas, 1u);
         }},
        {"getNationalArea", "getNationalArea", kRecord, "queryNationalAreaByAreaID {area_id: 3}", "", "1",
         [](TestManager& manager) {
             QMap<unsigned int, QString> areas{{1, "own"}};
             const int result = manager.getNationalArea(3, areas);
             return told(result, areas, 1u);
         }},
        {"getKestaList", "getKestaList", kPlannedBool, "getKestaList {commoncode: \"company\"}",
         "boxlist { box { box_key: 'k' box_value: 'a' } } boxlist {} "
         "boxlist { box { box_key: 'k' box_value: '\xe4\xb8\x80' } }",
         "1:=:k=\xe4\xb8\x80",
         [](TestManager& manager) {
             QMap<QString, QString> boxes{{"o", "own"}};
             const int result = manager.getKestaList(boxes);
             return told(result, boxes, QString("o"));
         }},
        {"getKestaIP", "getKestaIP", kPlannedText, "getKestaInfo {code: \"\\344\\270\\200\"}",
         "info { address: 'box:1' }", "box:1",
         [](TestManager& manager) { return manager.getKestaIP(QString::fromUtf8("一")).toStdString(); }},
        {"getVersionBySoftID", "getVersionBySoftID", kBool,
         "queryVersionByVersionNoAndProgramNo {programno: \"\\344\\270\\200\" versionno: \"2\"}", kBean,
         kInfo,
         [](TestManager& manager) {
             return version(
                 [&](tagVersionInfo& i) { return manager.getVersionBySoftID("\xd2\xbb", "2", i); });
         }},
        {"getVersionByAppID", "getVersionByAppID", kBool,
         "queryVersionByVersionNoAndModuleNo {moduleno: \"m\" versionno: \"2\"}", kBean, kInfo,
         [](TestManager& manager) {
             return version([&](tagVersionInfo& i) { return manager.getVersionByAppID("m", "2", i); });
         }},
        {"getLatestVersionBySoftID", "getLatestVersionBySoftID", kBool, "checkNewVersion {programno: \"p\"}",
         "", "1:kept,kept,kept,kept,kept",
         [](TestManager& manager) {
             return version([&](tagVersionInfo& i) { return manager.getLatestVersionBySoftID("p", i); });
         }},
        {"getLatestVersionByAppID", "getLatestVersionByAppID", kBool,
         "checkNewVersionByModuleNo {moduleno: \"m\"}", "bean { version_text_2: '2' version_text_5: '4' }",
         "1:kept,2,kept,4,kept",
         [](TestManager& manager) {
             return version([&](tagVersionInfo& i) { return manager.getLatestVersionByAppID("m", i); });
         }},
        {"getAppFullPathBySoftID", "getAppFullPathBySoftID", kText,
         "queryVersionByVersionNoAndProgramNo {programno: \"p\" versionno: \"2\"}", kBean, "/\xe4\xb8\x80",
         [](TestManager& manager) { return manager.getAppFullPathBySoftID("p", "2").toStdString(); }},
        {"getAppFullPathByAppID", "getAppFullPathByAppID", kText,
         "queryVersionByVersionNoAndModuleNo {moduleno: \"m\" versionno: \"\\344\\270\\200\"}", "", "",
         [](TestManager& manager) {
             return manager.getAppFullPathByAppID("m", QString::fromUtf8("一")).toStdString();
         }},
    };
    return all;
}

class Directory : public MethodTable
{
};

} // namespace

TEST_F(Directory, ASuccessHandsOnTheAnswerAndWritesTwoLines)
{
    succeeds(methods());
}

TEST_F(Directory, AFailedCallWritesItsErrorText)
{
    tellsOfAFailedCall(methods());
}

TEST_F(Directory, EachResultIsJudgedByTheMethodsVariant)
{
    judgesTheResult(methods());
}

TEST_F(Directory, AnAnswerOfThePlanningServiceWithoutAStatusIsASuccess)
{
    m_Channel.answer("boxlist { box { box_key: 'k' } }").answer("info { address: 'box:1' }");
    QMap<QString, QString> boxes;
    EXPECT_TRUE(m_Manager.getKestaList(boxes));
    EXPECT_EQ(boxes.size(), 1);
    EXPECT_EQ(m_Manager.getKestaIP("c"), "box:1");
}

TEST_F(Directory, AVersionTextOfAnyLengthArrivesWhole)
{
    tagVersionInfo info;
    m_Channel.answer("result: 0 bean { version_text_6: '" + std::string(70000, 'x') + "' }");
    EXPECT_TRUE(m_Manager.getLatestVersionBySoftID("p", info));
    EXPECT_EQ(info.text5, std::string(70000, 'x'));
}
