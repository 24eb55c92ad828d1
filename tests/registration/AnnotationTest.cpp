#include "tests/support/MethodTable.h"

namespace {

using Comments = QList<tagCommentInfo>;
using Keys = QList<unsigned int>;

const QString kNorth = QString::fromUtf8("北");

Calls calls()
{
    return {
        {"linkDataFolder", on([](auto& m) { return m.linkDataFolder(0xFFFFFFFE, 2); })},
        {"unlinkDataFolder", on([](auto& m) { return m.unlinkDataFolder(1, 2); })},
        {"linkDataFile", on([](auto& m) { return m.linkDataFile(1, 2); })},
        {"unlinkDataFile", on([](auto& m) { return m.unlinkDataFile(1, 2); })},
        {"getDataByFolder", on<tagDataTable>([](auto& m, auto& data) { return m.getDataByFolder(2, data); })},
        {"getDataByFile", on<tagDataTable>([](auto& m, auto& data) { return m.getDataByFile(2, data); })},
        {"getCommentInfo(id)", on<QString, QString>([](auto& m, auto&... texts) {
             return m.getCommentInfo(0xFFFFFFFE, texts...);
         })},
        {"getCommentInfo(absent)",
         on<QString, QString>([](auto& m, auto&... texts) { return m.getCommentInfo(1, texts...); })},
        {"getCommentInfo(comments)",
         on<Comments>([](auto& m, auto& comments) { return m.getCommentInfo(comments); })},
        {"getCommentContent",
         on<QStringList>([](auto& m, auto& texts) { return m.getCommentContent(texts); })},
        {"getCommentState",
         on<QStringList>([](auto& m, auto& texts) { return m.getCommentState(kNorth, texts); })},
        {"getCommentID", on([](auto& m) { return m.getCommentID(kNorth, "s"); })},
        {"addCommentInfo", on([](auto& m) { return m.addCommentInfo("c", kNorth); })},
        {"linkCommentInfoToRecord(record)",
         on([](auto& m) { return m.linkCommentInfoToRecord(DATA_TYPE_SAT_IMAGE, 2u, 3u); })},
        {"linkCommentInfoToRecord(records)", on([](auto& m) {
             return m.linkCommentInfoToRecord(DATA_TYPE_FOLDER, Keys{9, 0xFFFFFFFE, 9}, 3);
         })},
        {"getImageComment(id)",
         on<QString, QString>([](auto& m, auto&... texts) { return m.getImageComment(4, texts...); })},
        {"getImageComment(comments)",
         on<Comments>([](auto& m, auto& comments) { return m.getImageComment(comments); })},
        {"getImageCommentID", on([](auto& m) { return m.getImageCommentID(kNorth, "s"); })},
        {"getImageCommentID(empty)", on([](auto& m) { return m.getImageCommentID("", ""); })},
        {"addImageComment", on([](auto& m) { return m.addImageComment("c", kNorth); })},
        {"linkImageComment", on([](auto& m) { return m.linkImageComment(DATA_TYPE_DEM, 0xFFFFFFFE, 3); })},
        {"unlinkImageComment", on([](auto& m) { return m.unlinkImageComment(DATA_TYPE_DLG, 2, 3); })},
    };
}

class Annotation : public MethodTable
{
};

} // namespace

TEST_F(Annotation, MethodsAskAndJudgeAsTheirTableSays)
{
    run(methodsIn(TEST_FOLDER "/methods.txt", calls()));
}

TEST_F(Annotation, AnAnswerWithoutAProjectIsAFailure)
{
    const Calls all = calls();
    for (const Method& one : {Method{"getDataByFolder", Verdict::accepted, "queryDataSrcBySrcId {src_id: 2}",
                                     "", "", all.at("getDataByFolder")},
                              Method{"getDataByFile", Verdict::accepted, "queryDataSrcByFileId {file_id: 2}",
                                     "", "", all.at("getDataByFile")}})
        check(one, {"result: 0"}, "failed kept", one.operation() + " Result Error");
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
                     " second_id: 2 folder_path: \"北\"}"};
        }
        for (const std::string& line : one.afterEntering)
            lines.push_back(managerLine(line, "createFolder"));
        EXPECT_EQ(m_Manager.createFolder(one.first, one.second, kNorth), one.result);
        EXPECT_EQ(m_Channel.calls(), calls);
        EXPECT_EQ(m_Log.lines(), lines);
    }
}
