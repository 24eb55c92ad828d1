#include "tests/support/LogCapture.h"
#include "tests/support/TestManager.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

typedef std::vector<std::string> Lines;

/// How a method ends on each kind of answer, told in one word each.
struct Variant
{
    const char* failed;
    const char* minusTwo;
    const char* minusOne;
    bool minusOneIsNull; ///< the line says Result NULL, not Result Error
    bool fiveSucceeds;
};

const Variant kRecord = {"0", "0", "2", true, true};
const Variant kIdentifierPlain = {"none", "none", "none", false, false};
const Variant kIdentifierLookedUp = {"none", "none", "none", true, true};
const Variant kText = {"kept", "kept", "kept", false, false};

struct Method
{
    const char* name;
    const char* loggedName;
    Variant variant;
    const char* call;    ///< operation and request
    const char* answer;  ///< beside the result
    const char* success; ///< outcome on success
    std::function<std::string(TestManager&)> invoke;

    std::string operation() const { return std::string(call).substr(0, std::string(call).find(' ')); }
};

std::string identifier(unsigned int id)
{
    return id == 0xFFFFFFFF ? "none" : std::to_string(id);
}

std::string path(const QString& text, const QString& kestaCode)
{
    return text.isEmpty() && kestaCode == "kept" ? "kept" : (text + "@" + kestaCode).toStdString();
}

template <class Record>
std::string outcome(ENUM_RET_TYPE result, const Record& record, unsigned int Record::*id)
{
    // A record of the test's own has the identifier 99: anything but a success leaves it.
    EXPECT_EQ(record.*id == 99, result != RET_SUCCESS);
    return std::to_string(result) + (result == RET_SUCCESS ? ":" + identifier(record.*id) : "");
}

template <class Record>
std::string outcome(ENUM_RET_TYPE result, const QList<Record>& records, unsigned int Record::*id)
{
    std::string text = std::to_string(result);
    for (const Record& record : records)
        text += ":" + identifier(record.*id);
    return text;
}

const std::vector<Method>& methods()
{
    static const std::vector<Method> all = {
        {"getDisk", "getDisk", kRecord, "queryDataAddressByID {record_id: -2}", "bean { id: 5 }", "1:5",
         [](TestManager& manager) {
             tagDiskTable disk = {99, 0, "", "", ""};
             return outcome(manager.getDisk(4294967294u, disk), disk, &tagDiskTable::diskID);
         }},
        {"getDisk", "getDisk", kRecord, "queryDataAddressByName {name: \"\\347\\233\\230\" company_id: 7}",
         "bean { id: 5 }", "1:5",
         [](TestManager& manager) {
             tagDiskTable disk = {99, 0, "", "", ""};
             return outcome(manager.getDisk(QString::fromUtf8("盘"), disk), disk, &tagDiskTable::diskID);
         }},
        {"getDisk", "getDisk", kRecord, "queryDataAddress {company_id: 7 address_kind: 1}",
         "dataaddresss { id: 5 } dataaddresss {}", "1:5:none",
         [](TestManager& manager) {
             QList<tagDiskTable> disks;
             return outcome(manager.getDisk(disks), disks, &tagDiskTable::diskID);
         }},
        {"getCompanyID", "getCompanyID", kIdentifierLookedUp,
         "queryCompanyTableByCompanyNo {companyno: \"\\344\\270\\200\"}", "bean { id: 0 companyno: 'x' }",
         "0", [](TestManager& manager) { return identifier(manager.getCompanyID(QString::fromUtf8("一"))); }},
        {"getRoleID", "getRole", kIdentifierLookedUp, "queryUserTableByUserName {username: \"a\"}",
         "bean { id: 5 }", "5", [](TestManager& manager) { return identifier(manager.getRoleID("a")); }},
        {"getFolder", "getFolder", kRecord, "querySrcTableBySrcId {src_id: 3}", "bean { id: 5 }", "1:5",
         [](TestManager& manager) {
             tagFolderTable folder = {99, 0, 0, "", "", ""};
             return outcome(manager.getFolder(3, folder), folder, &tagFolderTable::folderID);
         }},
        {"getFolderID", "getFolderID", kIdentifierPlain,
         "querySrcTableByUniqueness {disk_id: 1 parent_src_id: 0 srcname: \"a b\"}", "bean { id: 5 }", "5",
         [](TestManager& manager) { return identifier(manager.getFolderID(1, 0, "a b")); }},
        {"getFile", "getFile", kRecord, "queryFileTableByFileId {file_id: 3}", "bean { id: 5 }", "1:5",
         [](TestManager& manager) {
             tagFileTable file = {99, 0, "", "", ""};
             return outcome(manager.getFile(3, file), file, &tagFileTable::fileID);
         }},
        {"getFile", "getFile", kRecord, "queryFileTableByFilePathId {list_file_id: 4 list_file_id: 2}",
         "filetabs { id: 2 } filetabs { id: 4 }", "1:2:4",
         [](TestManager& manager) {
             QList<tagFileTable> files;
             return outcome(manager.getFile(QList<unsigned int>() << 4 << 2, files), files,
                            &tagFileTable::fileID);
         }},
        {"getFile", "getFile", kRecord, "queryFileTableByFilePathId {}", "", "1",
         [](TestManager& manager) {
             QList<tagFileTable> files;
             return outcome(manager.getFile(QList<unsigned int>(), files), files, &tagFileTable::fileID);
         }},
        {"getFileByName", "getFileByName", kRecord, "queryFileTableByName {src_id: 3 filename: \"n\"}",
         "bean { id: 5 }", "1:5",
         [](TestManager& manager) {
             tagFileTable file = {99, 0, "", "", ""};
             return outcome(manager.getFileByName(3, "n", file), file, &tagFileTable::fileID);
         }},
        {"getFileFullPath", "getFileFullPath", kText, "getFileFullPath {file_id: 3}",
         "full_path: '/r/\xe4\xb8\x80' kesta_code: 'K1'", "/r/\xe4\xb8\x80@K1",
         [](TestManager& manager) {
             QString kestaCode = "kept";
             const QString full = manager.getFileFullPath(3, kestaCode);
             return path(full, kestaCode);
         }},
        {"getFolderFullPath", "getFolderFullPath", kText, "getFolderFullPath {src_id: 3}",
         "full_path: '/r' kesta_code: 'K1'", "/r@K1",
         [](TestManager& manager) {
             QString kestaCode = "kept";
             const QString full = manager.getFolderFullPath(3, kestaCode);
             return path(full, kestaCode);
         }},
    };
    return all;
}

class CallFrames : public ::testing::Test
{
protected:
    /// Runs a method after the answers that the channel got, and checks what lies between Enter and Leave.
    void check(const Method& method, const std::string& outcome, const Lines& between)
    {
        SCOPED_TRACE(method.call);
        m_Log.clear();
        m_Channel.forgetCalls();
        EXPECT_EQ(method.invoke(m_Manager), outcome);
        EXPECT_EQ(m_Channel.calls(), Lines{method.call});
        EXPECT_EQ(m_Channel.timeouts().back(), 4321);
        Lines expected = {managerLine(std::string("Enter Function : ") + method.loggedName, method.name)};
        for (const std::string& message : between)
            expected.push_back(managerLine(message, method.name));
        expected.push_back(managerLine(std::string("Leave Function : ") + method.loggedName, method.name));
        EXPECT_EQ(m_Log.lines(), expected);
    }

    LogCapture m_Log;
    FakeChannel m_Channel;
    TestManager m_Manager{m_Channel};
};

} // namespace

TEST_F(CallFrames, ASuccessHandsOnTheAnswerAndWritesTwoLines)
{
    for (const Method& method : methods()) {
        m_Channel.answer(std::string("result: 0 ") + method.answer);
        check(method, method.success, {});
    }
}

TEST_F(CallFrames, AFailedCallWritesItsErrorText)
{
    for (const Method& method : methods()) {
        m_Channel.fail("100% gone: %s");
        check(method, method.variant.failed, {method.operation() + " Error : 100% gone: %s"});
    }
}

TEST_F(CallFrames, EachResultIsJudgedByTheMethodsVariant)
{
    for (const Method& method : methods()) {
        const Lines error = {method.operation() + " Result Error"};
        const Lines null = {method.operation() + " Result NULL"};
        m_Channel.answer(std::string("result: -2 ") + method.answer);
        check(method, method.variant.minusTwo, error);
        m_Channel.answer(std::string("result: -1 ") + method.answer);
        check(method, method.variant.minusOne, method.variant.minusOneIsNull ? null : error);
        m_Channel.answer(std::string("result: 5 ") + method.answer);
        if (method.variant.fiveSucceeds)
            check(method, method.success, {});
        else
            check(method, method.variant.failed, error);
    }
}

TEST_F(CallFrames, ASuccessWithoutABeanGivesTheDefaultsOfEachField)
{
    tagDiskTable disk = {1, 2, "a", "b", "c"};
    m_Channel.answer("result: 0");
    EXPECT_EQ(m_Manager.getDisk(1, disk), RET_SUCCESS);
    EXPECT_EQ(disk.diskID, 0xFFFFFFFF);
    EXPECT_EQ(disk.refID, 0xFFFFFFFF);
    EXPECT_STREQ(disk.diskName, "");
    m_Channel.answer("result: 0");
    EXPECT_EQ(m_Manager.getFolderID(1, 0, "a"), 0u);
}

TEST_F(CallFrames, AListIsAppendedTo)
{
    QList<tagDiskTable> disks;
    disks << tagDiskTable() << tagDiskTable() << tagDiskTable();
    m_Channel.answer("result: 0 dataaddresss { id: 1 } dataaddresss { id: 2 }");
    EXPECT_EQ(m_Manager.getDisk(disks), RET_SUCCESS);
    ASSERT_EQ(disks.size(), 5);
    EXPECT_EQ(disks[4].diskID, 2u);
    m_Channel.answer("result: -1");
    EXPECT_EQ(m_Manager.getDisk(disks), RET_NULL);
    EXPECT_EQ(disks.size(), 5);
}

TEST_F(CallFrames, AnExceptionOfAComponentPassesWithoutALeaveLine)
{
    tagDiskTable disk;
    m_Log.clear();
    EXPECT_THROW(m_Manager.getDisk(1, disk), std::logic_error); // nothing is scripted
    EXPECT_EQ(m_Log.lines(), Lines{managerLine("Enter Function : getDisk", "getDisk")});
}
