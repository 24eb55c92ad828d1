#include "tests/support/MethodTable.h"

namespace {

using Disks = QList<tagDiskTable>;
using Folders = QList<tagFolderTable>;
using Files = QList<tagFileTable>;

const std::vector<Method>& methods()
{
    static const std::vector<Method> all = {
        method<tagDiskTable>("getDisk", Verdict::judged, "queryDataAddressByID {record_id: -2}",
                             "bean { id: 5 }", "ok 5",
                             [](auto& m, auto& disk) { return m.getDisk(4294967294u, disk); }),
        method<tagDiskTable>(
            "getDisk", Verdict::judged, "queryDataAddressByName {name: \"\\347\\233\\230\" company_id: 7}",
            "", "ok none", [](auto& m, auto& disk) { return m.getDisk(QString::fromUtf8("盘"), disk); }),
        method<Disks>("getDisk", Verdict::judged, "queryDataAddress {company_id: 7 address_kind: 1}",
                      "dataaddresss { id: 5 } dataaddresss {}", "ok kept 5 none",
                      [](auto& m, auto& disks) { return m.getDisk(disks); }),
        method("getCompanyID", Verdict::judged,
               "queryCompanyTableByCompanyNo {companyno: \"\\344\\270\\200\"}", "bean { companyno: 'x' }",
               "0", [](auto& m) { return m.getCompanyID(QString::fromUtf8("一")); }),
        method("getRoleID as getRole", Verdict::judged, "queryUserTableByUserName {username: \"a\"}",
               "bean { id: 5 }", "5", [](auto& m) { return m.getRoleID("a"); }),
        method<tagFolderTable>("getFolder", Verdict::judged, "querySrcTableBySrcId {src_id: 3}",
                               "bean { id: 5 }", "ok 5",
                               [](auto& m, auto& folder) { return m.getFolder(3, folder); }),
        method("getFolderID", Verdict::accepted,
               "querySrcTableByUniqueness {disk_id: 1 parent_src_id: 0 srcname: \"a b\"}", "bean { id: 5 }",
               "5", [](auto& m) { return m.getFolderID(1, 0, "a b"); }),
        method("getFolderID", Verdict::accepted,
               "querySrcTableByUniqueness {disk_id: 0 parent_src_id: 2 srcname: \"\"}", "", "0",
               [](auto& m) { return m.getFolderID(0, 2, ""); }),
        method<Folders>("getFolderByParentID", Verdict::pages,
                        "querySrcTableByParentSrcId {$ parent_src_id: 3}", "srctabs { id: $ }", "",
                        [](auto& m, auto& list) { return m.getFolderByParentID(3, list); }),
        method<Folders>("getFolderByDataAndComment", Verdict::pages,
                        "querySrcTableByProjectIDAndCommentIdForPage {project_id: 3 $ comment_id: 4}",
                        "srctabs { id: $ }", "",
                        [](auto& m, auto& list) { return m.getFolderByDataAndComment(3, 4, list); }),
        method<tagFileTable>("getFile", Verdict::judged, "queryFileTableByFileId {file_id: 3}",
                             "bean { id: 5 }", "ok 5",
                             [](auto& m, auto& file) { return m.getFile(3, file); }),
        method<Files>("getFile", Verdict::judged,
                      "queryFileTableByFilePathId {list_file_id: 4 list_file_id: 2}",
                      "filetabs { id: 2 } filetabs { id: 4 }", "ok kept 2 4",
                      [](auto& m, auto& files) {
                          return m.getFile(QList<unsigned int>{4, 2}, files);
                      }),
        method<Files>("getFile", Verdict::judged, "queryFileTableByFilePathId {}", "", "ok kept",
                      [](auto& m, auto& files) { return m.getFile(QList<unsigned int>(), files); }),
        method<tagFileTable>("getFileByName", Verdict::judged,
                             "queryFileTableByName {src_id: 3 filename: \"n\"}", "bean { id: 5 }", "ok 5",
                             [](auto& m, auto& file) { return m.getFileByName(3, "n", file); }),
        method<Files>("getFileByParentID", Verdict::pages, "queryFileTableBySrcId {src_id: 3 $}",
                      "filetabs { id: $ }", "",
                      [](auto& m, auto& list) { return m.getFileByParentID(3, list); }),
        method<Files>("getFileByDataAndComment", Verdict::pages,
                      "queryFileTableByProjectIDAndCommentIdForPage {project_id: 3 $ comment_id: 4}",
                      "filetabs { id: $ }", "",
                      [](auto& m, auto& list) { return m.getFileByDataAndComment(3, 4, list); }),
        method<QString>("getFileFullPath", Verdict::accepted, "getFileFullPath {file_id: 3}",
                        "full_path: '/r/一' kesta_code: 'K1'", "/r/一 K1",
                        [](auto& m, auto& code) { return m.getFileFullPath(3, code); }),
        method<QString>("getFolderFullPath", Verdict::accepted, "getFolderFullPath {src_id: 3}",
                        "full_path: '/r' kesta_code: '一'", "/r 一",
                        [](auto& m, auto& code) { return m.getFolderFullPath(3, code); }),
    };
    return all;
}

class CallFrames : public MethodTable
{
};

} // namespace

TEST_F(CallFrames, MethodsAskAndJudgeAsTheirTableSays)
{
    run(methods());
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
