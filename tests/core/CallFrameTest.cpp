#include "lumo/core/LastFailure.h"
#include "tests/support/MethodTable.h"

#include <thread>

namespace {

using Disks = QList<tagDiskTable>;
using Folders = QList<tagFolderTable>;
using Files = QList<tagFileTable>;

Calls calls()
{
    return {
        {"getDisk(id)", on<tagDiskTable>([](auto& m, auto& disk) { return m.getDisk(0xFFFFFFFE, disk); })},
        {"getDisk(name)",
         on<tagDiskTable>([](auto& m, auto& disk) { return m.getDisk(QString::fromUtf8("盘"), disk); })},
        {"getDisk(disks)", on<Disks>([](auto& m, auto& disks) { return m.getDisk(disks); })},
        {"getCompanyID", on([](auto& m) { return m.getCompanyID(QString::fromUtf8("一")); })},
        {"getRoleID", on([](auto& m) { return m.getRoleID("a"); })},
        {"getFolder", on<tagFolderTable>([](auto& m, auto& folder) { return m.getFolder(3, folder); })},
        {"getFolderID", on([](auto& m) { return m.getFolderID(1, 0, "a b"); })},
        {"getFolderID(top)", on([](auto& m) { return m.getFolderID(0, 2, ""); })},
        {"getFolderByParentID",
         on<Folders>([](auto& m, auto& list) { return m.getFolderByParentID(3, list); })},
        {"getFolderByDataAndComment",
         on<Folders>([](auto& m, auto& list) { return m.getFolderByDataAndComment(3, 4, list); })},
        {"getFile(id)", on<tagFileTable>([](auto& m, auto& file) { return m.getFile(3, file); })},
        {"getFile(ids)", on<Files>([](auto& m, auto& files) {
             return m.getFile(QList<unsigned int>{4, 2}, files);
         })},
        {"getFile(none)",
         on<Files>([](auto& m, auto& files) { return m.getFile(QList<unsigned int>(), files); })},
        {"getFileByName",
         on<tagFileTable>([](auto& m, auto& file) { return m.getFileByName(3, "n", file); })},
        {"getFileByParentID", on<Files>([](auto& m, auto& list) { return m.getFileByParentID(3, list); })},
        {"getFileByDataAndComment",
         on<Files>([](auto& m, auto& list) { return m.getFileByDataAndComment(3, 4, list); })},
        {"getFileFullPath", on<QString>([](auto& m, auto& code) { return m.getFileFullPath(3, code); })},
        {"getFolderFullPath", on<QString>([](auto& m, auto& code) { return m.getFolderFullPath(3, code); })},
    };
}

class CallFrames : public MethodTable
{
};

} // namespace

TEST_F(CallFrames, MethodsAskAndJudgeAsTheirTableSays)
{
    run(methodsIn(TEST_FOLDER "/methods.txt", calls()));
}

TEST_F(CallFrames, TheLastFailureOfAThreadKeepsWhatTheCentreSaid)
{
    using Kind = lumo::LastFailure::Kind;
    const struct
    {
        const char* answer;
        Kind kind;
        int code;
        const char* reason;
    } kCases[] = {{"(no right) result: -2", Kind::Refused, -2, "no right"},
                  {"result: -1", Kind::NothingFound, -1, ""},
                  {"!gone", Kind::CallFailed, 0, "gone"}};
    lumo::forgetLastFailure();
    EXPECT_EQ(lumo::lastFailure().kind, Kind::None);
    for (const auto& one : kCases) {
        m_Channel.answer(one.answer).answer("result: 0");
        tagDiskTable disk;
        EXPECT_NE(m_Manager.getDisk(1, disk), RET_SUCCESS);
        EXPECT_EQ(m_Manager.getDisk(1, disk), RET_SUCCESS);
        const lumo::LastFailure failure = lumo::lastFailure();
        EXPECT_EQ(failure.kind, one.kind) << one.answer;
        EXPECT_EQ(failure.code, one.code) << one.answer;
        EXPECT_EQ(failure.reason, one.reason);
        EXPECT_EQ(failure.operation, "queryDataAddressByID");
    }
    std::thread([] { EXPECT_EQ(lumo::lastFailure().kind, Kind::None); }).join();
}

TEST_F(CallFrames, ATextThatDoesNotFitKeepsItsPredecessorsAcrossPages)
{
    const std::string tooLong(255, 'x');
    m_Channel.answer("result: 0 total: 3")
        .answer("filetabs { id: 1 name: 'first' }")
        .answer("filetabs { id: 2 name: '" + tooLong + "' } filetabs { id: 3 }");
    Files files;
    EXPECT_EQ(m_Manager.getFileByParentID(1, files), RET_SUCCESS);
    ASSERT_EQ(files.size(), 3);
    EXPECT_EQ(files[1].fileID, 2u);
    EXPECT_STREQ(files[1].fileName, "first");
    EXPECT_STREQ(files[2].fileName, "");
}
