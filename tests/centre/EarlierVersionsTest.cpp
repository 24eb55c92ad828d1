#include "centre/store/Schema.h"
#include "tests/centre/CentreSupport.h"

using testing::HasSubstr;

namespace {

/// Tables and indexes of a data folder.
std::string tablesOf(const std::string& path)
{
    return centre::openDatabase(path)->value(
        "SELECT group_concat(sql, ';') FROM (SELECT sql FROM sqlite_master ORDER BY type, name)");
}

/// A data folder that lumo-centre made when its tables had an earlier version.
class EarlierFolder
{
public:
    explicit EarlierFolder(int version, const std::string& change = {})
    {
        const std::string dump = readFile(LUMO_DATA_FOLDERS "/version" + std::to_string(version) + ".sql");
        const std::string mark = "-- token: ";
        const std::size_t start = dump.find(mark) + mark.size();
        m_Token = dump.substr(start, dump.find('\n', start) - start);
        database(Open::Create).execute(dump + change);
    }

    std::string path() const { return m_Folder.path().toStdString(); }
    const std::string& token() const { return m_Token; }
    int version() const { return std::stoi(database(Open::ReadOnly).value("PRAGMA user_version")); }

private:
    using Open = centre::SqliteDatabase::Open;
    centre::SqliteDatabase database(Open how) const { return {path() + "/centre.db", how}; }

    QTemporaryDir m_Folder;
    std::string m_Token;
};

const struct
{
    int since; ///< the first version that has the record
    const char* operation;
    const char* request;
    const char* answer;
} kRecords[] = {
    {1, "queryUserTableByUserName", "username: 'demo'", "id: 1"},
    {1, "queryCompanyTableByCompanyNo", "companyno: 'LUMO'", "id: 1"},
    {1, "getFileFullPath", "file_id: 3", "full_path: \"/tmp/disk/影像/2024/b\\'s.tif\" kesta_code: \"B1\""},
    {1, "getKestaInfo", "code: 'B1'", "address: \"127.0.0.1:7001\""},
    {3, "queryFileTableByProjectIDAndCommentIdTotal", "project_id: 1 comment_id: 3", "total: 1"},
    {3, "querySrcTableByProjectIDAndCommentIdTotal", "project_id: 1 comment_id: 3", "total: 1"},
    {1, "querySrcTableByProjectIDAndCommentIdTotal", "project_id: 1 comment_id: 7", "total: 0"},
    {2, "checkNewVersion", "programno: 'viewer'", "version_text_2: \"1.10\""},
    {2, "queryNationalAreaByAreaID", "area_id: 1", "area_name: \"华北\""},
    {3, "queryDataSrcByProjectName", "company_id: 1 proname: '华北'", "project_id: 1"},
    {3, "queryDataSrcSatById", "record_id: 1", "image_name: \"景1\""},
    {3, "queryDataSrcControlInfoByDqConID", "dqcon_id: 1 page_size: 9", "con_number: \"K1\""},
    {3, "searchDataByTypeSat",
     "company_id: 1 type_id: 1 use_bounds: true bound_a: 116 bound_b: 39 bound_c: 117 bound_d: 40",
     "image_name: \"景1\""},
    {3, "queryDataSrcSatByProjectIDAndCommID", "project_id: 1 comm_id: 4", "image_name: \"景1\""},
    {3, "queryCommentImageByCommID", "comment_id: 4", "commentcontent: \"mark 4\""},
    {4, "queryCommentImageByCommID", "comment_id: 5", "commentcontent: \"雪\""},
};

class EarlierVersions : public testing::TestWithParam<int>
{
};

TEST_P(EarlierVersions, OfTheTablesAreBroughtUpToDateWithTheirRecords)
{
    ONLY_WITH_A_DATA_FOLDER();
    const EarlierFolder folder(GetParam());
    EXPECT_EQ(folder.version(), GetParam());
    const centre::Centre centre(folder.path(), {});
    EXPECT_EQ(folder.version(), centre::schemaVersion());
    EXPECT_EQ(tablesOf(folder.path()), tablesOf(DataFolder().path()));
    const auto channel = channelTo(centre.address(), folder.token());
    for (const auto& each : kRecords) {
        const auto answer = ask(*channel, each.operation, each.request);
        EXPECT_EQ(answer.find(each.answer) != std::string::npos, GetParam() >= each.since) << answer;
    }
    // What later versions brought is there, too.
    EXPECT_THAT(ask(*channel, "addCommentInfo", "company_id: 1 commentcontent: 'new'"), HasSubstr("id: "));
    EXPECT_THAT(ask(*channel, "saveSingleDataByType",
                    "data_type_id: 3 checkdatabean { sqldata: \"company='LUMO',projectName='new'\" }"),
                HasSubstr("result: 0"));
    centre::Store(folder.path()).addArea(9, "new");
}

INSTANTIATE_TEST_SUITE_P(, EarlierVersions, testing::Values(1, 2, 3, 4), testing::PrintToStringParamName());

TEST(EarlierVersion, StaysAsItWasWhenItCannotBeBroughtUpToDate)
{
    ONLY_WITH_A_DATA_FOLDER();
    const EarlierFolder folder(1, "CREATE TABLE version(in_the_way)");
    EXPECT_THROW(centre::openDatabase(folder.path()), centre::DatabaseError);
    EXPECT_EQ(folder.version(), 1);
    centre::SqliteDatabase database(folder.path() + "/centre.db", centre::SqliteDatabase::Open::ReadOnly);
    EXPECT_THROW(database.value("SELECT may_write FROM user"), centre::DatabaseError);
}

} // namespace
