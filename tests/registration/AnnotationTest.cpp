#include "tests/support/MethodTable.h"

namespace {

using Comments = QList<tagCommentInfo>;
using Keys = QList<unsigned int>;

const QString kNorth = QString::fromUtf8("北");
#define TEST_NORTH "\"\\345\\214\\227\"" // as a request has it

const std::vector<Method>& methods()
{
    static const std::vector<Method> all = {
        method("linkDataFolder", Verdict::accepted, "addDataFolder {project_id: 4294967294 src_id: 2}", "",
               "ok", [](auto& m) { return m.linkDataFolder(4294967294u, 2); }),
        method("unlinkDataFolder", Verdict::accepted,
               "deleteDataFolderByProjectIDAndSrcId {project_id: 1 src_id: 2}", "", "ok",
               [](auto& m) { return m.unlinkDataFolder(1, 2); }),
        method("linkDataFile", Verdict::accepted, "addDataFile {project_id: 1 file_id: 2}", "", "ok",
               [](auto& m) { return m.linkDataFile(1, 2); }),
        method("unlinkDataFile", Verdict::accepted,
               "deleteDataFileByProjectIDAndFileId {project_id: 1 file_id: 2}", "", "ok",
               [](auto& m) { return m.unlinkDataFile(1, 2); }),
        method<tagDataTable>("getDataByFolder", Verdict::accepted, "queryDataSrcBySrcId {src_id: 2}",
                             "datasrcs { project_id: 5 } datasrcs { project_id: 6 } datasrcs {}", "ok 5",
                             [](auto& m, auto& data) { return m.getDataByFolder(2, data); }),
        method<tagDataTable>("getDataByFile", Verdict::accepted, "queryDataSrcByFileId {file_id: 2}",
                             "datasrcs {}", "ok none",
                             [](auto& m, auto& data) { return m.getDataByFile(2, data); }),

        method<QString, QString>(
            "getCommentInfo", Verdict::judged, "queryCommentInfoByID {record_id: -2}",
            "bean { commentcontent: '北' commentstate: 's' }", "ok 北 s",
            [](auto& m, auto&... texts) { return m.getCommentInfo(4294967294u, texts...); }),
        method<QString, QString>("getCommentInfo", Verdict::judged, "queryCommentInfoByID {record_id: 1}", "",
                                 "ok  ",
                                 [](auto& m, auto&... texts) { return m.getCommentInfo(1, texts...); }),
        method<Comments>("getCommentInfo", Verdict::judged, "queryCommentInfo {company_id: 7}",
                         "commentinfos { id: 1 commentcontent: 'c' commentstate: 's' } commentinfos {}",
                         "ok kept 1c,s none,",
                         [](auto& m, auto& comments) { return m.getCommentInfo(comments); }),
        method<QStringList>("getCommentContent", Verdict::judged, "queryCommentContents {company_id: 7}",
                            "commentcontents: '北' commentcontents: ''", "ok kept 北 ",
                            [](auto& m, auto& texts) { return m.getCommentContent(texts); }),
        method<QStringList>("getCommentState", Verdict::judged,
                            "queryCommentStateByCommentContent {commentcontent: " TEST_NORTH "}",
                            "commentstates: 'x' commentstates: 'y'", "ok kept x y",
                            [](auto& m, auto& texts) { return m.getCommentState(kNorth, texts); }),
        method("getCommentID", Verdict::accepted,
               "queryCommentID {commentcontent: " TEST_NORTH " commentstate: \"s\" company_id: 7}", "id: 5",
               "5", [](auto& m) { return m.getCommentID(kNorth, "s"); }),
        method("addCommentInfo", Verdict::accepted,
               "addCommentInfo {commentcontent: \"c\" commentstate: " TEST_NORTH " company_id: 7}", "", "0",
               [](auto& m) { return m.addCommentInfo("c", kNorth); }),
        method("linkCommentInfoToRecord", Verdict::acceptedTersely,
               "addOrUpdateCommentInfoByType {record_id: 2 data_type_id: 6 comment_id: 3}", "", "ok",
               [](auto& m) { return m.linkCommentInfoToRecord(DATA_TYPE_SAT_IMAGE, 2u, 3u); }),
        method("linkCommentInfoToRecord", Verdict::acceptedTersely,
               "linkCommentInfoToRecord {data_type_id: 1 list_id: 9 list_id: 4294967294 list_id: 9 "
               "comment_id: 3}",
               "", "ok",
               [](auto& m) {
                   return m.linkCommentInfoToRecord(DATA_TYPE_FOLDER, Keys{9, 4294967294u, 9}, 3);
               }),

        method<QString, QString>("getImageComment", Verdict::judged,
                                 "queryCommentImageByCommID {comment_id: 4}",
                                 "id: 9 bean { commentstate: '北' }", "ok  北",
                                 [](auto& m, auto&... texts) { return m.getImageComment(4, texts...); }),
        method<Comments>(
            "getImageComment", Verdict::judged, "queryCommentImage {}",
            "commentimages { id: 1 commentcontent: 'c' } commentimages { id: 2 commentstate: 's' }",
            "ok kept 1c, 2,s", [](auto& m, auto& comments) { return m.getImageComment(comments); }),
        method("getImageCommentID", Verdict::accepted,
               "queryCommentImageByContentAndState {commentcontent: " TEST_NORTH " commentstate: \"s\"}",
               "id: 9 bean { id: 5 }", "5", [](auto& m) { return m.getImageCommentID(kNorth, "s"); }),
        method("getImageCommentID", Verdict::accepted,
               "queryCommentImageByContentAndState {commentcontent: \"\" commentstate: \"\"}", "id: 9", "0",
               [](auto& m) { return m.getImageCommentID("", ""); }),
        method("addImageComment", Verdict::accepted,
               "addCommentImage {commentcontent: \"c\" commentstate: " TEST_NORTH "}", "id: 9 bean { id: 5 }",
               "9", [](auto& m) { return m.addImageComment("c", kNorth); }),
        method("linkImageComment", Verdict::accepted,
               "addEverImageByCommIDAndID {comment_id: 3 data_type_id: 10 record_id: -2}", "", "ok",
               [](auto& m) { return m.linkImageComment(DATA_TYPE_DEM, 4294967294u, 3); }),
        method("unlinkImageComment", Verdict::accepted,
               "deleteEverImageByCommIDAndID {comment_id: 3 data_type_id: 13 record_id: 2}", "", "ok",
               [](auto& m) { return m.unlinkImageComment(DATA_TYPE_DLG, 2, 3); }),
    };
    return all;
}

class Annotation : public MethodTable
{
};

} // namespace

TEST_F(Annotation, MethodsAskAndJudgeAsTheirTableSays)
{
    run(methods());
}

TEST_F(Annotation, AnAnswerWithoutAProjectIsAFailure)
{
    check(method<tagDataTable>("getDataByFolder", Verdict::accepted, "queryDataSrcBySrcId {src_id: 1}", "",
                               "", [](auto& m, auto& data) { return m.getDataByFolder(1, data); }),
          {"result: 0"}, "failed kept", "queryDataSrcBySrcId Result Error");
    check(method<tagDataTable>("getDataByFile", Verdict::accepted, "queryDataSrcByFileId {file_id: 1}", "",
                               "", [](auto& m, auto& data) { return m.getDataByFile(1, data); }),
          {"result: 0"}, "failed kept", "queryDataSrcByFileId Result Error");
}

TEST_F(Annotation, AnEmptyListOfRecordsIsLinkedWithoutACall)
{
    check(method("linkCommentInfoToRecord", Verdict::acceptedTersely, "", "", "",
                 [](auto& m) { return m.linkCommentInfoToRecord(DATA_TYPE_FILE, Keys(), 3); }),
          {}, "ok", "listID of linkCommentInfoToRecord isEmpty");
}

TEST_F(Annotation, TheChainAddsAndLinksWhateverBecomesOfEither)
{
    const struct
    {
        const char* added;
        const char* linked;
        unsigned int result;
        Lines addition, link; ///< lines of failures
    } kCases[] = {
        {"result: 0 id: 5", "result: 0", 5, {}, {}},
        {"result: 0 id: 5", "result: -2", 5, {}, {"addOrUpdateCommentInfoByType Error"}},
        {"result: -2 id: 5", "result: 0", 0xFFFFFFFF, {"addCommentInfo Result Error"}, {}},
    };
    for (const auto& one : kCases) {
        m_Channel.forgetCalls();
        m_Log.clear();
        m_Channel.answer(one.added).answer(one.linked);
        EXPECT_EQ(m_Manager.linkCommentInfoToRecord(DATA_TYPE_FILE, 2, "c", "s"), one.result);
        EXPECT_EQ(m_Channel.calls(),
                  (Lines{"addCommentInfo {commentcontent: \"c\" commentstate: \"s\" company_id: 7}",
                         "addOrUpdateCommentInfoByType {record_id: 2 data_type_id: 2 comment_id: " +
                             std::to_string(one.result) + "}"}));
        const std::string link = "linkCommentInfoToRecord", add = "addCommentInfo";
        Lines lines = framedLines(link, link);
        for (const Lines& inner : {framedLines(link, link, one.link), framedLines(add, add, one.addition)})
            lines.insert(lines.begin() + 1, inner.begin(), inner.end());
        EXPECT_EQ(m_Log.lines(), lines);
    }
}

TEST_F(Annotation, FoldersAreMadeUnderASecondIdentifierOnly)
{
    const struct
    {
        unsigned int first, second;
        const char* answer; ///< null for no call
        unsigned int result;
        Lines afterEntering;
    } kCases[] = {
        {1, 0, nullptr, 0xFFFFFFFF, {"Leave Function : createFolder"}},
        {0, 2, "folder_id: 5", 5, {"Leave Function : CreateFolder"}},
        {4294967294u, 2, "", 0, {"Leave Function : CreateFolder"}},
        {1, 2, "!gone", 0xFFFFFFFF, {"CreateFolder Error : gone", "Leave Function : CreateFolder"}},
    };
    for (const auto& one : kCases) {
        m_Channel.forgetCalls();
        m_Log.clear();
        Lines calls, lines{managerLine("Enter Function : createFolder", "createFolder")};
        if (one.answer) {
            m_Channel.answer(one.answer);
            calls = {"CreateFolder {first_id: " + std::to_string(one.first) +
                     " second_id: 2 folder_path: " TEST_NORTH "}"};
        }
        for (const std::string& line : one.afterEntering)
            lines.push_back(managerLine(line, "createFolder"));
        EXPECT_EQ(m_Manager.createFolder(one.first, one.second, kNorth), one.result);
        EXPECT_EQ(m_Channel.calls(), calls);
        EXPECT_EQ(m_Log.lines(), lines);
    }
}
