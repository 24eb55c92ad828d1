#include "ledger_annotation.pb.h"
#include "tests/support/MethodTable.h"

namespace {

const Variant kBool = {"0", "0", "0", false, false};
const Variant kTerse = {"0", "0", "0", false, false, false, true};
const Variant kIdentifier = {"none", "none", "none", false, false};
const Variant kQuery = {"0", "0", "2", true, true};

std::string identifier(unsigned int id)
{
    return id == 0xFFFFFFFF ? "none" : std::to_string(id);
}

QString north()
{
    return QString::fromUtf8("北");
}
#define NORTH "\"\\345\\214\\227\""

/// A project that has the key 99 before.
std::string project(const std::function<bool(tagDataTable&)>& get)
{
    tagDataTable data{};
    data.projectID = 99;
    const bool found = get(data);
    EXPECT_EQ(found, data.projectID != 99);
    return std::to_string(found) + (found ? ":" + identifier(data.projectID) : "");
}

/// Two texts that hold "kept" before.
std::string texts(const std::function<int(QString&, QString&)>& get)
{
    QString content = "kept", state = "kept";
    const int result = get(content, state);
    EXPECT_TRUE(result == RET_SUCCESS || (content == "kept" && state == "kept"));
    return std::to_string(result) +
           (result == RET_SUCCESS ? ":" + content.toStdString() + "," + state.toStdString() : "");
}

/// A list that holds the comment 99 before.
std::string comments(const std::function<int(QList<tagCommentInfo>&)>& get)
{
    QList<tagCommentInfo> list{{99, "", ""}};
    std::string outcome = std::to_string(get(list));
    EXPECT_EQ(list.takeFirst().id, 99u);
    for (const tagCommentInfo& comment : list)
        outcome += ":" + identifier(comment.id) + comment.content + "," + comment.state;
    return outcome;
}

/// A list that holds "own" before.
std::string textList(const std::function<int(QStringList&)>& get)
{
    QStringList list{"own"};
    const int result = get(list);
    EXPECT_EQ(list.takeFirst(), "own");
    return std::to_string(result) + (result == RET_SUCCESS ? ":" : "") + list.join(",").toStdString();
}

const std::vector<Method>& methods()
{
    static const std::vector<Method> all = {
        {"linkDataFolder", "linkDataFolder", kBool, "addDataFolder {project_id: 4294967294 src_id: 2}", "",
         "1", [](TestManager& m) { return std::to_string(m.linkDataFolder(4294967294u, 2)); }},
        {"unlinkDataFolder", "unlinkDataFolder", kBool,
         "deleteDataFolderByProjectIDAndSrcId {project_id: 1 src_id: 2}", "", "1",
         [](TestManager& m) { return std::to_string(m.unlinkDataFolder(1, 2)); }},
        {"linkDataFile", "linkDataFile", kBool, "addDataFile {project_id: 1 file_id: 2}", "", "1",
         [](TestManager& m) { return std::to_string(m.linkDataFile(1, 2)); }},
        {"unlinkDataFile", "unlinkDataFile", kBool,
         "deleteDataFileByProjectIDAndFileId {project_id: 1 file_id: 2}", "", "1",
         [](TestManager& m) { return std::to_string(m.unlinkDataFile(1, 2)); }},
        {"getDataByFolder", "getDataByFolder", kBool, "queryDataSrcBySrcId {src_id: 2}",
         "datasrcs { project_id: 5 } datasrcs { project_id: 6 } datasrcs {}", "1:5",
         [](TestManager& m) {
             return project([&](tagDataTable& data) { return m.getDataByFolder(2, data); });
         }},
        {"getDataByFile", "getDataByFile", kBool, "queryDataSrcByFileId {file_id: 2}", "datasrcs {}",
         "1:none",
         [](TestManager& m) {
             return project([&](tagDataTable& data) { return m.getDataByFile(2, data); });
         }},

        {"getCommentInfo", "getCommentInfo", kQuery, "queryCommentInfoByID {record_id: -2}",
         "bean { commentcontent: '北' commentstate: 's' }", "1:北,s",
         [](TestManager& m) {
             return texts([&](QString& c, QString& s) { return m.getCommentInfo(4294967294u, c, s); });
         }},
        {"getCommentInfo", "getCommentInfo", kQuery, "queryCommentInfoByID {record_id: 1}", "", "1:,",
         [](TestManager& m) {
             return texts([&](QString& c, QString& s) { return m.getCommentInfo(1, c, s); });
         }},
        {"getCommentInfo", "getCommentInfo", kQuery, "queryCommentInfo {company_id: 7}",
         "commentinfos { id: 1 commentcontent: 'c' commentstate: 's' } commentinfos {}", "1:1c,s:none,",
         [](TestManager& m) {
             return comments([&](QList<tagCommentInfo>& l) { return m.getCommentInfo(l); });
         }},
        {"getCommentContent", "getCommentContent", kQuery, "queryCommentContents {company_id: 7}",
         "commentcontents: '北' commentcontents: ''", "1:北,",
         [](TestManager& m) { return textList([&](QStringList& l) { return m.getCommentContent(l); }); }},
        {"getCommentState", "getCommentState", kQuery,
         "queryCommentStateByCommentContent {commentcontent: " NORTH "}",
         "commentstates: 'x' commentstates: 'y'", "1:x,y",
         [](TestManager& m) {
             return textList([&](QStringList& l) { return m.getCommentState(north(), l); });
         }},
        {"getCommentID", "getCommentID", kIdentifier,
         "queryCommentID {commentcontent: " NORTH " commentstate: \"s\" company_id: 7}", "id: 5", "5",
         [](TestManager& m) { return identifier(m.getCommentID(north(), "s")); }},
        {"addCommentInfo", "addCommentInfo", kIdentifier,
         "addCommentInfo {commentcontent: \"c\" commentstate: " NORTH " company_id: 7}", "", "0",
         [](TestManager& m) { return identifier(m.addCommentInfo("c", north())); }},
        {"linkCommentInfoToRecord", "linkCommentInfoToRecord", kTerse,
         "addOrUpdateCommentInfoByType {record_id: 2 data_type_id: 6 comment_id: 3}", "", "1",
         [](TestManager& m) {
             return std::to_string(m.linkCommentInfoToRecord(DATA_TYPE_SAT_IMAGE, 2u, 3u));
         }},
        {"linkCommentInfoToRecord", "linkCommentInfoToRecord", kTerse,
         "linkCommentInfoToRecord {data_type_id: 1 list_id: 9 list_id: 4294967294 list_id: 9 comment_id: 3}",
         "", "1",
         [](TestManager& m) {
             return std::to_string(
                 m.linkCommentInfoToRecord(DATA_TYPE_FOLDER, QList<unsigned int>{9, 4294967294u, 9}, 3));
         }},

        {"getImageComment", "getImageComment", kQuery, "queryCommentImageByCommID {comment_id: 4}",
         "id: 9 bean { commentstate: '北' }", "1:,北",
         [](TestManager& m) {
             return texts([&](QString& c, QString& s) { return m.getImageComment(4, c, s); });
         }},
        {"getImageComment", "getImageComment", kQuery, "queryCommentImage {}",
         "commentimages { id: 1 commentcontent: 'c' } commentimages { id: 2 commentstate: 's' }", "1:1c,:2,s",
         [](TestManager& m) {
             return comments([&](QList<tagCommentInfo>& l) { return m.getImageComment(l); });
         }},
        {"getImageCommentID", "getImageCommentID", kIdentifier,
         "queryCommentImageByContentAndState {commentcontent: " NORTH " commentstate: \"s\"}",
         "id: 9 bean { id: 5 }", "5",
         [](TestManager& m) { return identifier(m.getImageCommentID(north(), "s")); }},
        {"getImageCommentID", "getImageCommentID", kIdentifier,
         "queryCommentImageByContentAndState {commentcontent: \"\" commentstate: \"\"}", "id: 9", "0",
         [](TestManager& m) { return identifier(m.getImageCommentID("", "")); }},
        {"addImageComment", "addImageComment", kIdentifier,
         "addCommentImage {commentcontent: \"c\" commentstate: " NORTH "}", "id: 9 bean { id: 5 }", "9",
         [](TestManager& m) { return identifier(m.addImageComment("c", north())); }},
        {"linkImageComment", "linkImageComment", kBool,
         "addEverImageByCommIDAndID {comment_id: 3 data_type_id: 10 record_id: -2}", "", "1",
         [](TestManager& m) { return std::to_string(m.linkImageComment(DATA_TYPE_DEM, 4294967294u, 3)); }},
        {"unlinkImageComment", "unlinkImageComment", kBool,
         "deleteEverImageByCommIDAndID {comment_id: 3 data_type_id: 13 record_id: 2}", "", "1",
         [](TestManager& m) { return std::to_string(m.unlinkImageComment(DATA_TYPE_DLG, 2, 3)); }},
    };
    return all;
}

class Annotation : public MethodTable
{
protected:
    Lines framed(const std::string& method, Lines between)
    {
        Lines lines{managerLine("Enter Function : " + method, method)};
        for (const std::string& message : between)
            lines.push_back(managerLine(message, method));
        return lines;
    }
};

} // namespace

TEST_F(Annotation, ASuccessHandsOnTheAnswerAndWritesTwoLines)
{
    succeeds(methods());
}

TEST_F(Annotation, AFailedCallWritesItsErrorText)
{
    tellsOfAFailedCall(methods());
}

TEST_F(Annotation, EachResultIsJudgedByTheMethodsVariant)
{
    judgesTheResult(methods());
}

TEST_F(Annotation, AnAnswerWithoutAProjectIsAFailure)
{
    m_Channel.answer("result: 0").answer("result: 0");
    tagDataTable data{};
    EXPECT_FALSE(m_Manager.getDataByFolder(1, data));
    EXPECT_FALSE(m_Manager.getDataByFile(1, data));
    EXPECT_EQ(data.projectID, 0u);
    EXPECT_EQ(m_Log.lines()[m_Log.lines().size() - 2],
              managerLine("queryDataSrcByFileId Result Error", "getDataByFile"));
}

TEST_F(Annotation, AnEmptyListOfRecordsIsLinkedWithoutACall)
{
    m_Log.clear();
    EXPECT_TRUE(m_Manager.linkCommentInfoToRecord(DATA_TYPE_FILE, QList<unsigned int>(), 3));
    EXPECT_EQ(m_Channel.calls(), Lines());
    EXPECT_EQ(m_Log.lines(), framed("linkCommentInfoToRecord", {"listID of linkCommentInfoToRecord isEmpty",
                                                                "Leave Function : linkCommentInfoToRecord"}));
}

TEST_F(Annotation, TheChainAddsAndLinksWhateverBecomesOfEither)
{
    const struct
    {
        const char* added;
        const char* linked;
        unsigned int result;
        const char* comment;
    } kCases[] = {
        {"result: 0 id: 5", "result: 0", 5, "5"},
        {"result: 0 id: 5", "result: -2", 5, "5"},
        {"result: -2 id: 5", "result: 0", 0xFFFFFFFF, "4294967295"},
    };
    for (const auto& one : kCases) {
        m_Channel.forgetCalls();
        m_Log.clear();
        m_Channel.answer(one.added).answer(one.linked);
        EXPECT_EQ(m_Manager.linkCommentInfoToRecord(DATA_TYPE_FILE, 2, "c", "s"), one.result);
        EXPECT_EQ(m_Channel.calls(),
                  (Lines{"addCommentInfo {commentcontent: \"c\" commentstate: \"s\" company_id: 7}",
                         "addOrUpdateCommentInfoByType {record_id: 2 data_type_id: 2 comment_id: " +
                             std::string(one.comment) + "}"}));
        const Lines lines = m_Log.lines();
        EXPECT_EQ(lines.front(),
                  managerLine("Enter Function : linkCommentInfoToRecord", "linkCommentInfoToRecord"));
        EXPECT_EQ(lines[1], managerLine("Enter Function : addCommentInfo", "addCommentInfo"));
        EXPECT_EQ(lines.back(),
                  managerLine("Leave Function : linkCommentInfoToRecord", "linkCommentInfoToRecord"));
        EXPECT_EQ(lines.size(), std::string(one.added) + one.linked == "result: 0 id: 5result: 0" ? 6u : 7u);
    }
}

TEST_F(Annotation, FoldersAreMadeUnderASecondIdentifierOnly)
{
    const struct
    {
        unsigned int first, second;
        const char* answer; ///< with a leading '!' a failed call; empty for no call
        unsigned int result;
        Lines between;
    } kCases[] = {
        {1, 0, "", 0xFFFFFFFF, {"Leave Function : createFolder"}},
        {0, 2, "folder_id: 5", 5, {"Leave Function : CreateFolder"}},
        {4294967294u, 2, "", 0, {"Leave Function : CreateFolder"}},
        {1, 2, "!gone", 0xFFFFFFFF, {"CreateFolder Error : gone", "Leave Function : CreateFolder"}},
    };
    for (const auto& one : kCases) {
        m_Channel.forgetCalls();
        m_Log.clear();
        if (*one.answer == '!')
            m_Channel.fail(one.answer + 1);
        else if (one.second != 0)
            m_Channel.answer(one.answer);
        EXPECT_EQ(m_Manager.createFolder(one.first, one.second, north()), one.result);
        EXPECT_EQ(m_Channel.calls(), one.second == 0
                                         ? Lines()
                                         : Lines{"CreateFolder {first_id: " + std::to_string(one.first) +
                                                 " second_id: 2 folder_path: " NORTH "}"});
        EXPECT_EQ(m_Log.lines(), framed("createFolder", one.between));
    }
}

TEST_F(Annotation, CommentTextsFitUpTo62Bytes)
{
    const auto check = [](auto convert, auto bean) {
        tagCommentInfo info;
        bean.set_commentcontent(std::string(62, 'c'));
        bean.set_commentstate("北");
        convert(bean, info);
        EXPECT_EQ(info.content, std::string(62, 'c'));
        EXPECT_STREQ(info.state, "\xb1\xb1");
        EXPECT_EQ(info.id, 0xFFFFFFFF);
        bean.set_commentcontent(std::string(63, 'd'));
        bean.clear_commentstate();
        bean.set_id(3);
        convert(bean, info);
        EXPECT_EQ(info.content, std::string(62, 'c'));
        EXPECT_EQ(std::string(info.state, 64), std::string(64, '\0'));
        EXPECT_EQ(info.id, 3u);
    };
    check(&TestManager::getCommentInfoFromBean, ledgerserver::CommentInfoBean());
    check(&TestManager::getCommentImageFromBean, ledgerserver::CommentImageBean());
}
