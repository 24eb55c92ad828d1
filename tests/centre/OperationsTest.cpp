#include "centre/content/Version.h"
#include "centre/store/Query.h"
#include "tests/centre/CentreSupport.h"

#include <set>

namespace {

struct Exchange
{
    std::string operation;
    std::string request;
    std::string response;
};

constexpr char kNorth[] = "id: 1 root_path: \"/srv/north\" name: \"north\" kesta_code: \"B1\"";
constexpr char kRoot[] = "id: 2 root_path: \"/\" name: \"根\"";
constexpr char kScenes[] =
    "id: 4 parent_id: 3 name: \"景\" long_text: \"long\" short_text: \"short\" disk_id: 1";
constexpr char kFirst[] = "id: 1 parent_id: 4 name: \"a.tif\"";
constexpr char kSecond[] = "id: 2 parent_id: 4 name: \"b.tif\" short_text: \"short\" long_text: \"long\"";

std::string result(const std::string& field, std::initializer_list<std::string> beans)
{
    std::string text = "result: 0";
    for (const std::string& bean : beans)
        text.append(" ").append(field).append(" { ").append(bean).append(" }");
    return text;
}

/// Disks north (folders north/years/景 with two files) and 根, links of project 7 and comment 9.
class Operations : public testing::Test
{
protected:
    Operations()
    {
        centre::Store store(m_Data.path());
        store.addBox("B1", "127.0.0.1:1");
        store.addDisk("north", "/srv/north", "LUMO", "B1");
        store.addDisk("根", "/", "LUMO");
        store.addBox("B2", "127.0.0.1:2");
        store.addBox("unused", "127.0.0.1:3");
        store.addArea(7, "中国");
        store.addArea(9, "南京", 7);
        store.addArea(8, "北京", 7);
        store.addArea(10, "海淀", 8);
        m_Data.makeFile("package/app");
        for (const char* version : {"1.9", "1.10", "1.10-rc1"})
            addVersion(store, {centre::VersionKind::Program, "P", version, package(), "B2", "", "2026-01-02",
                               "long notes"});
        addVersion(store,
                   {centre::VersionKind::Module, "P", "0.1", package(), "B2", "模块", "2026-01-03", ""});
        store.addCompany("other");
        store.database().exec(
            "INSERT INTO folder(parent_id, name, disk_id) VALUES (1, 'years', 1);"
            "INSERT INTO folder(parent_id, name, long_text, short_text, disk_id) VALUES (3, '景', 'long', "
            "'short', 1);"
            "INSERT INTO file(parent_id, name, short_text, long_text)"
            " VALUES (4, 'a.tif', NULL, NULL), (4, 'b.tif', 'short', 'long'), (2, 'top.txt', NULL, NULL);"
            "INSERT INTO data_folder VALUES (7, 3), (7, 4), (8, 4);"
            "INSERT INTO data_file VALUES (7, 1), (7, 2), (8, 2);"
            "INSERT INTO comment_record VALUES (9, 1, 4), (9, 2, 2), (9, 2, 3), (9, 3, 1)");
        m_Centre = std::make_unique<centre::Centre>(m_Data.path(), centre::ServeOptions());
        m_Channel = channelTo(m_Centre->address(), m_Data.token());
    }

    std::string package() const { return std::filesystem::canonical(m_Data.below("package/app")).string(); }

    DataFolder m_Data;
    std::unique_ptr<centre::Centre> m_Centre;
    boost::shared_ptr<wirecall::RpcChannel> m_Channel;
};

TEST_F(Operations, AnswerFromTheCatalogue)
{
    const std::string both = result("dataaddresss", {kNorth, kRoot});
    const std::string north = result("bean", {kNorth});
    const std::string scenes = result("bean", {kScenes});
    const std::string sceneList = result("srctabs", {kScenes});
    const std::string first = result("bean", {kFirst});
    const std::string second = result("bean", {kSecond});
    const std::string asAsked = result("filetabs", {kSecond, kFirst, kSecond});
    const std::string page = result("filetabs", {kFirst, kSecond});
    const std::string lastOfPage = result("filetabs", {kSecond});
    const auto program = [this](const std::string& number) {
        return "result: 0 bean { version_text_1: \"P\" version_text_2: \"" + number + "\" app_full_path: \"" +
               package() +
               "\" version_text_4: \"2026-01-02\" version_text_5: \"B2\" version_text_6: \"long notes\" }";
    };
    const std::string older = program("1.9");
    const std::string latest = program("1.10");
    const std::string module =
        "result: 0 bean { version_text_1: \"模块\" version_text_2: \"0.1\" app_full_path: \"" + package() +
        "\" version_text_4: \"2026-01-03\" version_text_5: \"B2\" }";
    const std::string areas =
        result("nationalareas", {"area_id: 7 area_name: \"中国\"", "area_id: 8 area_name: \"北京\"",
                                 "area_id: 9 area_name: \"南京\""});
    const std::string boxB2 = "boxlist { box { box_key: \"B2\" box_value: \"127.0.0.1:2\" } }";
    const std::string boxes =
        "status { status_code: 0 } boxlist { box { box_key: \"B1\" box_value: \"127.0.0.1:1\" } } " + boxB2;
    const std::string packageRequest = "serv_path: '" + package() + "'";
    const Exchange exchanges[] = {
        {"queryCompanyTableByCompanyNo", "companyno: 'LUMO'", "result: 0 bean { id: 1 companyno: \"LUMO\" }"},
        {"queryCompanyTableByCompanyNo", "companyno: 'lumo'", "result: -1"},
        {"queryUserTableByUserName", "username: 'demo'", "result: 0 bean { id: 1 username: \"demo\" }"},
        {"queryUserTableByUserName", "", "result: -1"},
        {"queryDataAddressByID", "record_id: 1", north},
        {"queryDataAddressByID", "record_id: -1", "result: -1"},
        {"queryDataAddressByName", "company_id: 1 name: 'north'", north},
        {"queryDataAddressByName", "company_id: 2 name: 'north'", "result: -1"},
        {"queryDataAddress", "company_id: 1 address_kind: 1", both},
        {"queryDataAddress", "company_id: 1 address_kind: 2", "result: -1"},
        {"querySrcTableBySrcId", "src_id: 4", scenes},
        {"querySrcTableBySrcId", "src_id: 0", "result: -1"},
        {"querySrcTableByUniqueness", "disk_id: 1 parent_src_id: 3 srcname: '景'", scenes},
        {"querySrcTableByUniqueness", "disk_id: 1 parent_src_id: 0 srcname: 'north'",
         "result: 0 bean { id: 1 parent_id: 0 name: \"north\" disk_id: 1 }"},
        {"querySrcTableByParentSrcIdTotal", "parent_src_id: 3", "result: 0 total: 1"},
        {"querySrcTableByParentSrcIdTotal", "parent_src_id: 4", "result: 0 total: 0"},
        {"querySrcTableByParentSrcId", "parent_src_id: 3 page_start: 0 page_size: 9", sceneList},
        {"querySrcTableByProjectIDAndCommentIdTotal", "project_id: 7 comment_id: 9", "result: 0 total: 1"},
        {"querySrcTableByProjectIDAndCommentIdForPage",
         "project_id: 7 comment_id: 9 page_start: 0 page_size: 9", sceneList},
        {"getFolderFullPath", "src_id: 4", "result: 0 full_path: \"/srv/north/years/景\" kesta_code: \"B1\""},
        {"getFolderFullPath", "src_id: 1", "result: 0 full_path: \"/srv/north\" kesta_code: \"B1\""},
        {"getFolderFullPath", "src_id: 2", "result: 0 full_path: \"/\""},
        {"getFolderFullPath", "src_id: 99", "result: -1"},
        {"queryFileTableByFileId", "file_id: 2", second},
        {"queryFileTableByFilePathId", "list_file_id: [2, 99, 1, 2]", asAsked},
        {"queryFileTableByFilePathId", "", "result: -1"},
        {"queryFileTableByName", "src_id: 4 filename: 'a.tif'", first},
        {"queryFileTableBySrcIdTotal", "src_id: 4", "result: 0 total: 2"},
        {"queryFileTableBySrcId", "src_id: 4 page_start: 0 page_size: 9", page},
        {"queryFileTableBySrcId", "src_id: 4 page_start: 1 page_size: 1", lastOfPage},
        {"queryFileTableBySrcId", "src_id: 4 page_start: 2 page_size: 9", "result: -1"},
        {"queryFileTableBySrcId", "src_id: 4 page_start: 0 page_size: 0", "result: -2"},
        {"queryFileTableBySrcId", "src_id: 4 page_start: -1 page_size: 9", "result: -2"},
        {"queryFileTableByProjectIDAndCommentIdTotal", "project_id: 7 comment_id: 9", "result: 0 total: 1"},
        {"queryFileTableByProjectIDAndCommentIdForPage",
         "project_id: 7 comment_id: 9 page_start: 0 page_size: 9", lastOfPage},
        {"getFileFullPath", "file_id: 2",
         "result: 0 full_path: \"/srv/north/years/景/b.tif\" kesta_code: \"B1\""},
        {"getFileFullPath", "file_id: 3", "result: 0 full_path: \"/top.txt\""},
        {"getFileFullPath", "file_id: 99", "result: -1"},
        {"queryCompanyTableByCompanyID", "company_id: 1", "result: 0 bean { id: 1 companyno: \"LUMO\" }"},
        {"queryCompanyTableByCompanyID", "company_id: 9", "result: -1"},
        {"queryNationalAreaByAreaID", "area_id: 7", areas},
        {"queryNationalAreaByAreaID", "area_id: 99", "result: -1"},
        {"queryVersionByVersionNoAndProgramNo", "programno: 'P' versionno: '1.9'", older},
        {"queryVersionByVersionNoAndProgramNo", "programno: 'P' versionno: '0.1'", "result: -1"},
        {"queryVersionByVersionNoAndModuleNo", "moduleno: 'P' versionno: '0.1'", module},
        {"checkNewVersion", "programno: 'P'", latest},
        {"checkNewVersion", "moduleno: 'P'", "result: -1"},
        {"checkNewVersionByModuleNo", "moduleno: 'P'", module},
        {"getKestaList", "commoncode: 'LUMO'", boxes},
        {"getKestaList", "commoncode: 'other'", "status { status_code: 0 } " + boxB2},
        {"getKestaList", "commoncode: 'unknown'", "status { status_code: -1 }"},
        {"getKestaInfo", "code: 'B2'", "info { address: \"127.0.0.1:2\" } status { status_code: 0 }"},
        {"getKestaInfo", "code: 'B3'", "status { status_code: -1 }"},
        {"CheckTransfer", "serv_path: '/srv/north/years'", "passed: true"},
        {"CheckTransfer", packageRequest, "passed: true"},
        {"CheckTransfer", "serv_path: '/srv/north/../x'", "passed: false"},
        {"CheckTransfer", "serv_path: '/srv'", "passed: false"},
        {"TransferProgress", "task_id: 't' progress_a: 1", ""},
    };
    for (const Exchange& exchange : exchanges)
        EXPECT_EQ(ask(*m_Channel, exchange.operation, exchange.request), exchange.response)
            << exchange.operation << " of " << exchange.request;
}

TEST_F(Operations, AllHaveAHandler)
{
    int operations = 0;
    for (const auto* service : {ledgerserver::LedgerServices::descriptor(),
                                Tavrel::TavrelServer::descriptor(), forgeserver::ForgeServices::descriptor()})
        for (int i = 0; i < service->method_count(); ++i, ++operations)
            EXPECT_THAT(ask(*m_Channel, service->method(i)->name(), ""),
                        testing::Not(testing::HasSubstr("not implemented")))
                << service->method(i)->name();
    EXPECT_EQ(operations, 127);
}

TEST_F(Operations, FindIdentifiersBeyondTheSignedRange)
{
    centre::Store(m_Data.path())
        .database()
        .exec("INSERT INTO company(id, companyno) VALUES (3000000000, 'far');"
              "INSERT INTO disk(id, root_path, name, company_id, address_kind)"
              " VALUES (4294967294, '/far', 'far', 3000000000, 1)");
    const std::string far = "id: 4294967294 root_path: \"/far\" name: \"far\"";
    EXPECT_EQ(ask(*m_Channel, "queryDataAddressByID", "record_id: -2"), result("bean", {far}));
    EXPECT_EQ(ask(*m_Channel, "queryDataAddress", "company_id: -1294967296 address_kind: 1"),
              result("dataaddresss", {far}));
}

TEST_F(Operations, PagesOfALargeFolderAreCompleteAndInOrder)
{
    constexpr std::uint32_t kFiles = 25000;
    centre::Store(m_Data.path()).addMadeUpFiles(3, kFiles);
    ledgerserver::LedgerServices_Stub stub(m_Channel.get());
    ledgerserver::DataUtilBeanReq request;
    request.set_src_id(3);
    request.set_page_size(10000);
    std::vector<int> sizes;
    std::set<std::string> names;
    std::uint32_t lastId = 0;
    std::uint32_t received = 0;
    while (received < kFiles) {
        request.set_page_start(static_cast<int>(received));
        wirecall::RpcController controller;
        ledgerserver::FileTableUtilBeanRsp response;
        stub.queryFileTableBySrcId(&controller, &request, &response, nullptr);
        ASSERT_FALSE(controller.Failed()) << controller.ErrorText();
        ASSERT_EQ(response.result(), 0);
        for (const auto& file : response.filetabs()) {
            ASSERT_GT(file.id(), lastId);
            lastId = file.id();
            names.insert(file.name());
        }
        sizes.push_back(response.filetabs_size());
        received += static_cast<std::uint32_t>(response.filetabs_size());
    }
    EXPECT_THAT(sizes, testing::ElementsAre(10000, 10000, 5000));
    EXPECT_EQ(names.size(), kFiles);
    EXPECT_EQ(*names.rbegin(), "file-024999.dat");
    EXPECT_EQ(ask(*m_Channel, "queryFileTableBySrcIdTotal", "src_id: 3"), "result: 0 total: 25000");
}

TEST_F(Operations, AnErrorOfTheDatabaseIsResultMinusTwo)
{
    centre::Store(m_Data.path()).database().exec("ALTER TABLE company RENAME COLUMN companyno TO other");
    EXPECT_EQ(ask(*m_Channel, "queryCompanyTableByCompanyNo", "companyno: 'LUMO'"), "result: -2");
}

TEST(Query, RefusesSqlThatDoesNotFitTheMessages)
{
    SQLite::Database database(":memory:", SQLite::OPEN_READWRITE);
    const auto& method = *ledgerserver::LedgerServices::descriptor()->FindMethodByName("queryDataAddress");
    for (const char* sql : {"SELECT 1 AS elsewhere", "SELECT 1 AS id WHERE :elsewhere"})
        EXPECT_THROW(centre::Query(database, {"queryDataAddress", centre::Shape::List, sql}, method),
                     std::logic_error)
            << sql;
}

} // namespace
