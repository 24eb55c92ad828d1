#include "tests/support/MethodTable.h"

namespace {

const QString kOne = QString::fromUtf8("一");

using Areas = QMap<unsigned int, QString>;
using Boxes = QMap<QString, QString>;

Calls calls()
{
    return {
        {"getCompanyNo", on([](auto& m) { return m.getCompanyNo(0xFFFFFFFE); })},
        {"getNationalArea", on<Areas>([](auto& m, auto& areas) { return m.getNationalArea(3, areas); })},
        {"getKestaList", on<Boxes>([](auto& m, auto& boxes) { return m.getKestaList(boxes); })},
        {"getKestaIP", on([](auto& m) { return m.getKestaIP(kOne); })},
        {"getVersionBySoftID",
         on<tagVersionInfo>([](auto& m, auto& info) { return m.getVersionBySoftID("\xd2\xbb", "2", info); })},
        {"getVersionByAppID",
         on<tagVersionInfo>([](auto& m, auto& info) { return m.getVersionByAppID("m", "\xd2\xbb", info); })},
        {"getLatestVersionBySoftID",
         on<tagVersionInfo>([](auto& m, auto& info) { return m.getLatestVersionBySoftID("p", info); })},
        {"getLatestVersionByAppID",
         on<tagVersionInfo>([](auto& m, auto& info) { return m.getLatestVersionByAppID("m", info); })},
        {"getAppFullPathBySoftID", on([](auto& m) { return m.getAppFullPathBySoftID("p", "2"); })},
        {"getAppFullPathByAppID", on([](auto& m) { return m.getAppFullPathByAppID("m", kOne); })},
    };
}

class Directory : public MethodTable
{
};

} // namespace

TEST_F(Directory, MethodsAskAndJudgeAsTheirTableSays)
{
    run(methodsIn(TEST_FOLDER "/methods.txt", calls()));
}

TEST_F(Directory, AVersionTextOfAnyLengthArrivesWhole)
{
    tagVersionInfo info;
    m_Channel.answer("result: 0 bean { version_text_6: '" + std::string(70000, 'x') + "' }");
    EXPECT_TRUE(m_Manager.getLatestVersionBySoftID("p", info));
    EXPECT_EQ(info.text5, std::string(70000, 'x'));
}
