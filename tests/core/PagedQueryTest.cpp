#include "tests/support/LogCapture.h"
#include "tests/support/TestManager.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

typedef std::vector<std::string> Lines;

struct PagedMethod
{
    const char* name;
    const char* totalOperation;
    const char* pageOperation;
    const char* keys; ///< of the request, in text form
    const char* list;
    std::function<ENUM_RET_TYPE(TestManager&, Lines& identifiers)>
        invoke; ///< on a list that holds one record
};

template <class Record>
ENUM_RET_TYPE onList(Lines& identifiers, unsigned int Record::*id,
                     const std::function<ENUM_RET_TYPE(QList<Record>&)>& query)
{
    Record mine = Record();
    mine.*id = 99;
    QList<Record> records;
    records << mine;
    const ENUM_RET_TYPE result = query(records);
    for (const Record& record : records)
        identifiers.push_back(std::to_string(record.*id));
    return result;
}

ENUM_RET_TYPE onFolders(Lines& identifiers, const std::function<ENUM_RET_TYPE(QList<tagFolderTable>&)>& query)
{
    return onList(identifiers, &tagFolderTable::folderID, query);
}

ENUM_RET_TYPE onFiles(Lines& identifiers, const std::function<ENUM_RET_TYPE(QList<tagFileTable>&)>& query)
{
    return onList(identifiers, &tagFileTable::fileID, query);
}

const PagedMethod kMethods[] = {
    {"getFolderByParentID", "querySrcTableByParentSrcIdTotal", "querySrcTableByParentSrcId",
     "parent_src_id: 3", "srctabs",
     [](TestManager& manager, Lines& identifiers) {
         return onFolders(identifiers,
                          [&](QList<tagFolderTable>& list) { return manager.getFolderByParentID(3, list); });
     }},
    {"getFolderByDataAndComment", "querySrcTableByProjectIDAndCommentIdTotal",
     "querySrcTableByProjectIDAndCommentIdForPage", "project_id: 3 comment_id: 4", "srctabs",
     [](TestManager& manager, Lines& identifiers) {
         return onFolders(identifiers, [&](QList<tagFolderTable>& list) {
             return manager.getFolderByDataAndComment(3, 4, list);
         });
     }},
    {"getFileByParentID", "queryFileTableBySrcIdTotal", "queryFileTableBySrcId", "src_id: 3", "filetabs",
     [](TestManager& manager, Lines& identifiers) {
         return onFiles(identifiers,
                        [&](QList<tagFileTable>& list) { return manager.getFileByParentID(3, list); });
     }},
    {"getFileByDataAndComment", "queryFileTableByProjectIDAndCommentIdTotal",
     "queryFileTableByProjectIDAndCommentIdForPage", "project_id: 3 comment_id: 4", "filetabs",
     [](TestManager& manager, Lines& identifiers) {
         return onFiles(identifiers, [&](QList<tagFileTable>& list) {
             return manager.getFileByDataAndComment(3, 4, list);
         });
     }},
};

/// A request of a page in text form: fields stand in the order of their places.
std::string pageRequest(const PagedMethod& method, int start)
{
    std::string keys = method.keys;
    const std::string page = "page_start: " + std::to_string(start) + " page_size: 10000";
    for (const char* behind : {"parent_src_id", "comment_id"}) {
        const std::size_t place = keys.find(behind);
        if (place != std::string::npos)
            return keys.insert(place, page + " ");
    }
    return keys + " " + page;
}

std::string page(const char* list, int first, int count, int result = 0)
{
    std::string text = "result: " + std::to_string(result);
    for (int i = first; i < first + count; ++i)
        text += std::string(" ") + list + " { id: " + std::to_string(i) + " }";
    return text;
}

class PagedQueries : public ::testing::Test
{
protected:
    LogCapture m_Log;
    FakeChannel m_Channel;
    TestManager m_Manager{m_Channel};
};

} // namespace

TEST_F(PagedQueries, CountsThenFetchesFromWhatWasReceived)
{
    for (const PagedMethod& method : kMethods) {
        SCOPED_TRACE(method.name);
        m_Channel.forgetCalls();
        m_Log.clear();
        m_Channel.answer("result: 0 total: 5")
            .answer(page(method.list, 1, 2))
            .answer(page(method.list, 3, 4, 17));
        Lines identifiers;
        EXPECT_EQ(method.invoke(m_Manager, identifiers), RET_SUCCESS);
        EXPECT_EQ(identifiers, (Lines{"99", "1", "2", "3", "4", "5", "6"}))
            << "all of a page, past the total too";
        EXPECT_EQ(m_Channel.calls(),
                  (Lines{std::string(method.totalOperation) + " {" + method.keys + "}",
                         std::string(method.pageOperation) + " {" + pageRequest(method, 0) + "}",
                         std::string(method.pageOperation) + " {" + pageRequest(method, 2) + "}"}));
        EXPECT_EQ(m_Log.lines(),
                  (Lines{managerLine(std::string("Enter Function : ") + method.name, method.name),
                         managerLine(std::string("Leave Function : ") + method.name, method.name)}));
    }
    for (const long long timeout : m_Channel.timeouts())
        EXPECT_EQ(timeout, 4321) << "set again for every call";
}

TEST_F(PagedQueries, CornerCases)
{
    const struct
    {
        const char* what;
        std::vector<std::string> answers; ///< a leading '!' is a failed call
        ENUM_RET_TYPE result;
        Lines identifiers;
        std::string line; ///< behind the page operation's name
        std::size_t calls;
    } cases[] = {
        {"an empty list is a success", {"result: 0 total: 0"}, RET_SUCCESS, {"99"}, "", 1},
        {"a negative total too", {"result: 0 total: -3"}, RET_SUCCESS, {"99"}, "", 1},
        {"a count that fails", {"!gone"}, RET_FAILED, {"99"}, "Total Error : gone", 1},
        {"a count that answers -1", {"result: -1 total: 5"}, RET_FAILED, {"99"}, "Total Result Error", 1},
        {"a count that answers 5", {"result: 5 total: 5"}, RET_FAILED, {"99"}, "Total Result Error", 1},
        {"a first page that fails", {"result: 0 total: 2", "!gone"}, RET_FAILED, {}, " Error : gone", 2},
        {"a later page that fails",
         {"result: 0 total: 3", page("filetabs", 1, 2), "!gone"},
         RET_FAILED,
         {},
         " Error : gone",
         3},
        {"a page that answers -2",
         {"result: 0 total: 2", "result: -2 filetabs { id: 1 }"},
         RET_FAILED,
         {},
         " Result Error",
         2},
        {"a page that answers -1", {"result: 0 total: 2", "result: -1"}, RET_NULL, {}, " Result NULL", 2},
        {"a page without records",
         {"result: 0 total: 3", page("filetabs", 1, 2), "result: 0"},
         RET_FAILED,
         {},
         " Result Error",
         3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        m_Channel.forgetCalls();
        m_Log.clear();
        for (const std::string& answer : c.answers)
            if (answer[0] == '!')
                m_Channel.fail(answer.substr(1));
            else
                m_Channel.answer(answer);
        Lines identifiers;
        EXPECT_EQ(kMethods[2].invoke(m_Manager, identifiers), c.result);
        EXPECT_EQ(identifiers, c.identifiers);
        EXPECT_EQ(m_Channel.calls().size(), c.calls);
        EXPECT_TRUE(m_Channel.allPlayed());
        Lines expected = {managerLine("Enter Function : getFileByParentID", "getFileByParentID")};
        if (!c.line.empty())
            expected.push_back(managerLine("queryFileTableBySrcId" + c.line, "getFileByParentID"));
        expected.push_back(managerLine("Leave Function : getFileByParentID", "getFileByParentID"));
        EXPECT_EQ(m_Log.lines(), expected);
    }
}

TEST_F(PagedQueries, ATextThatDoesNotFitKeepsItsPredecessorsAcrossPages)
{
    const std::string tooLong(255, 'x');
    m_Channel.answer("result: 0 total: 3")
        .answer("filetabs { id: 1 name: 'first' }")
        .answer("filetabs { id: 2 name: '" + tooLong + "' } filetabs { id: 3 }");
    QList<tagFileTable> files;
    EXPECT_EQ(m_Manager.getFileByParentID(1, files), RET_SUCCESS);
    ASSERT_EQ(files.size(), 3);
    EXPECT_EQ(files[1].fileID, 2u);
    EXPECT_STREQ(files[1].fileName, "first");
    EXPECT_STREQ(files[2].fileName, "");
}
