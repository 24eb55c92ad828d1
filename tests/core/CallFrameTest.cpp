#include "tests/support/MethodTable.h"

namespace {

const Variant kRecord = {"0", "0", "2", true, true};
const Variant kIdentifierPlain = {"none", "none", "none", false, false};
const Variant kIdentifierLookedUp = {"none", "none", "none", true, true};
const Variant kText = {"kept", "kept", "kept", false, false};

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

class CallFrames : public MethodTable
{
};

} // namespace

TEST_F(CallFrames, ASuccessHandsOnTheAnswerAndWritesTwoLines)
{
    succeeds(methods());
}

TEST_F(CallFrames, AFailedCallWritesItsErrorText)
{
    tellsOfAFailedCall(methods());
}

TEST_F(CallFrames, EachResultIsJudgedByTheMethodsVariant)
{
    judgesTheResult(methods());
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
