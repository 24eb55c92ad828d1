#include "centre/content/LoadRecords.h"
#include "tests/centre/CentreSupport.h"

#include <sstream>

namespace {

/// Projects 1 and 2 of LUMO with images and control points, project 3 of another company, with a disk each.
class Annotations : public testing::Test
{
protected:
    Annotations()
    {
        centre::Store store(m_Data.path());
        store.addCompany("other");
        m_ReaderToken = store.addUser("reader", "LUMO", false);
        m_OtherToken = store.addUser("other", "other");
        store.addMadeUpFiles(store.addDisk("disk", "/srv/a", "LUMO"), 3);
        store.addMadeUpFiles(store.addDisk("disk", "/srv/b", "other"), 1);
        std::istringstream lines(R"({"kind":"project","company":"LUMO","projectName":"P"}
{"kind":"project","company":"LUMO","projectName":"Q"}
{"kind":"project","company":"other","projectName":"R"}
{"kind":"type","projectID":1,"dataType":"卫星影像"}
{"kind":"type","projectID":1,"dataType":"控制点属性"}
{"kind":"type","projectID":3,"dataType":"卫星影像"}
{"kind":"sat","typeID":1,"marks":[4]}
{"kind":"sat","typeID":1}
{"kind":"sat","typeID":3}
{"kind":"control","typeID":2}
{"kind":"point","dqConID":1})");
        centre::loadRecords(store, lines, "lines", [](std::uint64_t) {});
        m_Centre = std::make_unique<centre::Centre>(m_Data.path(), centre::ServeOptions());
        m_Channel = channelTo(m_Centre->address(), m_Data.token());
    }

    DataFolder m_Data;
    std::string m_ReaderToken;
    std::string m_OtherToken;
    std::unique_ptr<centre::Centre> m_Centre;
    boost::shared_ptr<wirecall::RpcChannel> m_Channel;
};

/// What is asked one after the other; `told` is a part of the centre's line on standard error.
struct Step
{
    std::string operation;
    std::string request;
    std::string response;
    std::string told{};
};

void take(wirecall::RpcChannel& channel, const std::vector<Step>& steps)
{
    for (const Step& step : steps) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(ask(channel, step.operation, step.request), step.response)
            << step.operation << " of " << step.request;
        const std::string told = testing::internal::GetCapturedStderr();
        EXPECT_THAT(told, step.told.empty() ? testing::Matcher<std::string>(testing::IsEmpty())
                                            : testing::HasSubstr(step.operation + ": " + step.told))
            << step.operation << " of " << step.request;
    }
}

const std::string kP = "datasrcs { project_id: 1 project_name: \"P\" company_id: 1 }";
const std::string kQ = "datasrcs { project_id: 2 project_name: \"Q\" company_id: 1 }";

TEST_F(Annotations, LinkProjectsToFoldersAndFiles)
{
    const struct
    {
        const char* add;
        const char* remove;
        const char* find;
        const char* key;
        const char* what;
    } links[] = {
        {"addDataFolder", "deleteDataFolderByProjectIDAndSrcId", "queryDataSrcBySrcId", "src_id", "folder"},
        {"addDataFile", "deleteDataFileByProjectIDAndFileId", "queryDataSrcByFileId", "file_id", "file"},
    };
    for (const auto& link : links) {
        const std::string of = std::string(" ") + link.key + ": ";
        const std::string what = link.what;
        const bool isFile = what == "file";
        const std::string foreign = isFile ? "4" : "2";
        take(*m_Channel,
             {{link.find, of + "1", "result: -1"},
              {link.remove, "project_id: 2" + of + "1", "result: -1"},
              {link.add, "project_id: 2" + of + "1", "result: 0"},
              {link.add, "project_id: 1" + of + "1", "result: 0"},
              {link.add, "project_id: 1" + of + "1", "result: 0"},
              {link.find, of + "1", "result: 0 " + kP + " " + kQ},
              {link.add, "project_id: 9" + of + "1", "result: -2", "there is no project 9"},
              {link.add, "project_id: 1" + of + "9", "result: -2", "there is no " + what + " 9"},
              {link.add, "project_id: 3" + of + "1", "result: -2", "project 3 is not of the company of user"},
              {link.add, "project_id: 1" + of + foreign, "result: -2", what + " " + foreign + " is not of"},
              {link.remove, "project_id: 1" + of + "9", "result: -2", "there is no " + what + " 9"},
              {link.add, "", "result: -2", "there is no project 0"},
              {link.remove, "project_id: 1" + of + "1", "result: 0"},
              {link.remove, "project_id: 1" + of + "1", "result: -1"},
              {link.find, of + "1", "result: 0 " + kQ}});
        take(*channelTo(m_Centre->address(), m_ReaderToken),
             {{link.add, "project_id: 1" + of + "1", "result: -2", "user reader may only read"},
              {link.find, of + "1", "result: 0 " + kQ}});
    }
}

TEST_F(Annotations, CommentsBelongToACompanyAndARecordBearsOne)
{
    const std::string cloudy = "commentcontent: \"云\" commentstate: \"new\"";
    const std::string done = "commentcontent: \"云\" commentstate: \"done\"";
    const std::string files = "querySrcTableByProjectIDAndCommentIdTotal";
    take(*m_Channel,
         {{"queryCommentInfo", "company_id: 1", "result: -1"},
          {"addCommentInfo", "company_id: 1 " + cloudy, "result: 0 id: 1"},
          {"addCommentInfo", "company_id: 1 " + done, "result: 0 id: 2"},
          {"addCommentInfo", "company_id: 1 " + cloudy, "result: 0 id: 1"},
          {"addCommentInfo", "company_id: 2 " + cloudy, "result: -2", "company 2 is not that of user demo"},
          {"addCommentInfo", "company_id: 1", "result: -2", "a comment without content"},
          {"addCommentInfo", "company_id: 1 commentcontent: 'a\\000'", "result: -2", "a comment is UTF-8"},
          {"addCommentInfo", "company_id: 1 commentcontent: 'x'", "result: 0 id: 3"},
          {"queryCommentID", "company_id: 1 " + done, "result: 0 id: 2"},
          {"queryCommentID", "company_id: 1 commentcontent: 'x'", "result: 0 id: 3"},
          {"queryCommentID", "company_id: 2 " + done, "result: -1"},
          {"queryCommentInfoByID", "record_id: 2", "result: 0 bean { id: 2 " + done + " }"},
          {"queryCommentInfoByID", "record_id: 9", "result: -1"},
          {"queryCommentInfo", "company_id: 1",
           "result: 0 commentinfos { id: 1 " + cloudy + " } commentinfos { id: 2 " + done +
               " } commentinfos { id: 3 commentcontent: \"x\" commentstate: \"\" }"},
          {"queryCommentContents", "company_id: 1",
           "result: 0 commentcontents: \"云\" commentcontents: \"x\""},
          {"queryCommentStateByCommentContent", "commentcontent: '云'",
           "result: 0 commentstates: \"new\" commentstates: \"done\""},
          {"queryCommentStateByCommentContent", "commentcontent: 'y'", "result: -1"},

          {"addDataFile", "project_id: 1 file_id: 1", "result: 0"},
          {"addDataFile", "project_id: 1 file_id: 2", "result: 0"},
          {"addDataFolder", "project_id: 1 src_id: 1", "result: 0"},
          {"linkCommentInfoToRecord", "data_type_id: 2 comment_id: 1 list_id: [1, 2]", "result: 0"},
          {"addOrUpdateCommentInfoByType", "data_type_id: 1 comment_id: 1 record_id: 1", "result: 0"},
          {files, "project_id: 1 comment_id: 1", "result: 0 total: 1"},
          {"queryFileTableByProjectIDAndCommentIdTotal", "project_id: 1 comment_id: 1", "result: 0 total: 2"},
          {"addOrUpdateCommentInfoByType", "data_type_id: 2 comment_id: 2 record_id: 1", "result: 0"},
          {"addOrUpdateCommentInfoByType", "data_type_id: 2 comment_id: 2 record_id: 1", "result: 0"},
          {"queryFileTableByProjectIDAndCommentIdTotal", "project_id: 1 comment_id: 1", "result: 0 total: 1"},
          {"queryFileTableByProjectIDAndCommentIdTotal", "project_id: 1 comment_id: 2", "result: 0 total: 1"},
          {"linkCommentInfoToRecord", "data_type_id: 2 comment_id: 3 list_id: [1, 99]", "result: -2",
           "there is no file 99"},
          {"queryFileTableByProjectIDAndCommentIdTotal", "project_id: 1 comment_id: 2", "result: 0 total: 1"},
          {"addOrUpdateCommentInfoByType", "data_type_id: 2 comment_id: 9 record_id: 1", "result: -2",
           "the company of user demo has no comment 9"},
          {"addOrUpdateCommentInfoByType", "data_type_id: 2 comment_id: 4294967295 record_id: 1",
           "result: -2", "the company of user demo has no comment 4294967295"},
          {"linkCommentInfoToRecord", "data_type_id: 14 comment_id: 1 list_id: 1", "result: -2",
           "there are no records of data type 14"},
          {"linkCommentInfoToRecord", "data_type_id: -1 comment_id: 1 list_id: 1", "result: -2",
           "there are no records of data type -1"},
          {"addOrUpdateCommentInfoByType", "data_type_id: 6 comment_id: 1 record_id: 3", "result: -2",
           "sat 3 is not of the company"},
          {"addOrUpdateCommentInfoByType", "data_type_id: 6 comment_id: 1 record_id: 9", "result: -2",
           "there is no sat 9"}});
    const std::pair<int, int> records[] = {{0, 1}, {1, 1}, {2, 3}, {3, 1}, {4, 1}, {6, 1}, {8, 1}, {9, 1}};
    for (const auto& [kind, id] : records)
        take(*m_Channel,
             {{"addOrUpdateCommentInfoByType",
               "comment_id: 1 data_type_id: " + std::to_string(kind) + " record_id: " + std::to_string(id),
               "result: 0"}});
    take(*channelTo(m_Centre->address(), m_OtherToken),
         {{"queryCommentStateByCommentContent", "commentcontent: '云'", "result: -1"},
          {"addOrUpdateCommentInfoByType", "data_type_id: 6 comment_id: 1 record_id: 3", "result: -2",
           "the company of user other has no comment 1"},
          {"addCommentInfo", "company_id: 2 " + cloudy, "result: 0 id: 4"}});
    take(*channelTo(m_Centre->address(), m_ReaderToken),
         {{"addCommentInfo", "company_id: 1 " + cloudy, "result: -2", "user reader may only read"}});
}

TEST_F(Annotations, ImageCommentsMarkRecords)
{
    const std::string good = "commentcontent: \"好\" commentstate: \"\"";
    const std::string byMark = "queryDataSrcSatByProjectIDAndCommID";
    const std::string first = "datasrcsats { image_id: 1 }";
    take(*m_Channel,
         {{"queryCommentImage", "",
           "result: 0 commentimages { id: 4 commentcontent: \"mark 4\" commentstate: \"\" }"},
          {"addCommentImage", good, "result: 0 id: 5"},
          {"addCommentImage", "commentcontent: '好'", "result: 0 id: 5"},
          {"addCommentImage", "", "result: -2", "a comment without content"},
          {"queryCommentImageByCommID", "comment_id: 5", "result: 0 bean { id: 5 " + good + " }"},
          {"queryCommentImageByCommID", "comment_id: 9", "result: -1"},
          {"queryCommentImageByContentAndState", good, "result: 0 bean { id: 5 " + good + " }"},
          {"queryCommentImageByContentAndState", "commentcontent: 'x'", "result: -1"},
          {byMark, "project_id: 1 comm_id: 4", "result: 0 " + first},
          {byMark, "project_id: 1 comm_id: 5", "result: -1"},
          {"addEverImageByCommIDAndID", "comment_id: 5 data_type_id: 6 record_id: 1", "result: 0"},
          {"addEverImageByCommIDAndID", "comment_id: 5 data_type_id: 6 record_id: 1", "result: 0"},
          {"addEverImageByCommIDAndID", "comment_id: 5 data_type_id: 6 record_id: 2", "result: 0"},
          {byMark, "project_id: 1 comm_id: 5", "result: 0 " + first + " datasrcsats { image_id: 2 }"},
          {"deleteEverImageByCommIDAndID", "comment_id: 5 data_type_id: 6 record_id: 2", "result: 0"},
          {"deleteEverImageByCommIDAndID", "comment_id: 5 data_type_id: 6 record_id: 2", "result: -1"},
          {byMark, "project_id: 1 comm_id: 5", "result: 0 " + first},
          {"addEverImageByCommIDAndID", "comment_id: 9 data_type_id: 6 record_id: 1", "result: -2",
           "there is no image comment 9"},
          {"addEverImageByCommIDAndID", "comment_id: 5 data_type_id: 6 record_id: 9", "result: -2",
           "there is no sat 9"},
          {"addEverImageByCommIDAndID", "comment_id: 5 data_type_id: 6 record_id: 3", "result: -2",
           "sat 3 is not of the company"},
          {"deleteEverImageByCommIDAndID", "comment_id: 9 data_type_id: 6 record_id: 1", "result: -2",
           "there is no image comment 9"}});
}

} // namespace
