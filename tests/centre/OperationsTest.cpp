#include "centre/LedgerOperations.h"
#include "tests/centre/CentreSupport.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <set>

namespace {

struct Exchange
{
    const char* operation;
    const char* request;
    const char* response;
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
    const Exchange exchanges[] = {
        {"queryCompanyTableByCompanyNo", "companyno: 'LUMO'", "result: 0 bean { id: 1 companyno: \"LUMO\" }"},
        {"queryCompanyTableByCompanyNo", "companyno: 'lumo'", "result: -1"},
        {"queryUserTableByUserName", "username: 'demo'", "result: 0 bean { id: 1 username: \"demo\" }"},
        {"queryUserTableByUserName", "", "result: -1"},
        {"queryDataAddressByID", "record_id: 1", north.c_str()},
        {"queryDataAddressByID", "record_id: -1", "result: -1"},
        {"queryDataAddressByName", "company_id: 1 name: 'north'", north.c_str()},
        {"queryDataAddressByName", "company_id: 2 name: 'north'", "result: -1"},
        {"queryDataAddress", "company_id: 1 address_kind: 1", both.c_str()},
        {"queryDataAddress", "company_id: 1 address_kind: 2", "result: -1"},
        {"querySrcTableBySrcId", "src_id: 4", scenes.c_str()},
        {"querySrcTableBySrcId", "src_id: 0", "result: -1"},
        {"querySrcTableByUniqueness", "disk_id: 1 parent_src_id: 3 srcname: '景'", scenes.c_str()},
        {"querySrcTableByUniqueness", "disk_id: 1 parent_src_id: 0 srcname: 'north'",
         "result: 0 bean { id: 1 parent_id: 0 name: \"north\" disk_id: 1 }"},
        {"querySrcTableByParentSrcIdTotal", "parent_src_id: 3", "result: 0 total: 1"},
        {"querySrcTableByParentSrcIdTotal", "parent_src_id: 4", "result: 0 total: 0"},
        {"querySrcTableByParentSrcId", "parent_src_id: 3 page_start: 0 page_size: 9", sceneList.c_str()},
        {"querySrcTableByProjectIDAndCommentIdTotal", "project_id: 7 comment_id: 9", "result: 0 total: 1"},
        {"querySrcTableByProjectIDAndCommentIdForPage",
         "project_id: 7 comment_id: 9 page_start: 0 page_size: 9", sceneList.c_str()},
        {"getFolderFullPath", "src_id: 4", "result: 0 full_path: \"/srv/north/years/景\" kesta_code: \"B1\""},
        {"getFolderFullPath", "src_id: 1", "result: 0 full_path: \"/srv/north\" kesta_code: \"B1\""},
        {"getFolderFullPath", "src_id: 2", "result: 0 full_path: \"/\""},
        {"getFolderFullPath", "src_id: 99", "result: -1"},
        {"queryFileTableByFileId", "file_id: 2", second.c_str()},
        {"queryFileTableByFilePathId", "list_file_id: [2, 99, 1, 2]", asAsked.c_str()},
        {"queryFileTableByFilePathId", "", "result: -1"},
        {"queryFileTableByName", "src_id: 4 filename: 'a.tif'", first.c_str()},
        {"queryFileTableBySrcIdTotal", "src_id: 4", "result: 0 total: 2"},
        {"queryFileTableBySrcId", "src_id: 4 page_start: 0 page_size: 9", page.c_str()},
        {"queryFileTableBySrcId", "src_id: 4 page_start: 1 page_size: 1", lastOfPage.c_str()},
        {"queryFileTableBySrcId", "src_id: 4 page_start: 2 page_size: 9", "result: -1"},
        {"queryFileTableBySrcId", "src_id: 4 page_start: 0 page_size: 0", "result: -2"},
        {"queryFileTableBySrcId", "src_id: 4 page_start: -1 page_size: 9", "result: -2"},
        {"queryFileTableByProjectIDAndCommentIdTotal", "project_id: 7 comment_id: 9", "result: 0 total: 1"},
        {"queryFileTableByProjectIDAndCommentIdForPage",
         "project_id: 7 comment_id: 9 page_start: 0 page_size: 9", lastOfPage.c_str()},
        {"getFileFullPath", "file_id: 2",
         "result: 0 full_path: \"/srv/north/years/景/b.tif\" kesta_code: \"B1\""},
        {"getFileFullPath", "file_id: 3", "result: 0 full_path: \"/top.txt\""},
        {"getFileFullPath", "file_id: 99", "result: -1"},
    };
    std::set<std::string> unasked;
    const auto& service = *ledgerserver::LedgerServices::descriptor();
    for (int i = 0; i < service.method_count(); ++i)
        unasked.insert(service.method(i)->name());
    for (const Exchange& exchange : exchanges) {
        EXPECT_EQ(ask(*m_Channel, exchange.operation, exchange.request), exchange.response)
            << exchange.operation << " of " << exchange.request;
        unasked.erase(exchange.operation);
    }
    EXPECT_THAT(unasked, testing::IsEmpty()) << "operations of the service that no exchange covers";
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
