#include "centre/store/Query.h"
#include "tests/centre/CentreSupport.h"

#include <set>

namespace {

class Operations : public CentreTest
{
};

TEST_F(Operations, AllHaveAHandler)
{
    serve();
    int operations = 0;
    for (const auto* service : {ledgerserver::LedgerServices::descriptor(),
                                Tavrel::TavrelServer::descriptor(), forgeserver::ForgeServices::descriptor()})
        for (int i = 0; i < service->method_count(); ++i, ++operations)
            EXPECT_THAT(ask(service->method(i)->name(), ""),
                        testing::Not(testing::HasSubstr("not implemented")))
                << service->method(i)->name();
    EXPECT_EQ(operations, 127);
}

TEST_F(Operations, PagesOfALargeFolderAreCompleteAndInOrder)
{
    constexpr std::uint32_t kFiles = 25000;
    const std::uint32_t folder = m_Store.addDisk("disk", "/srv", "LUMO");
    m_Store.addMadeUpFiles(folder, kFiles);
    serve();
    ledgerserver::LedgerServices_Stub stub(m_Channel.get());
    ledgerserver::DataUtilBeanReq request;
    request.set_src_id(folder);
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
    EXPECT_EQ(ask("queryFileTableBySrcIdTotal", "src_id: 1"), "result: 0 total: 25000");
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
