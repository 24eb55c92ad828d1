#include "centre/database/Sql.h"
#include "centre/database/SqliteDatabase.h"
#include "centre/store/Query.h"
#include "tests/centre/CentreSupport.h"

#include <algorithm>

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
                        testing::Not(testing::AnyOf(testing::HasSubstr("not implemented"),
                                                    testing::HasSubstr("Deadline"))))
                << service->method(i)->name();
    EXPECT_EQ(operations, 127);
}

TEST_F(Operations, AreWrittenInSqlThatTheEngineTakes)
{
    serve(); // prepares the operations that read
    ask("addDataFile", "project_id: 1 file_id: 1");
    const std::vector<std::string> all = centre::Sql::all();
    EXPECT_GT(all.size(), 60u);
    for (const std::string& sql : all)
        EXPECT_NO_THROW(m_Store.database().prepare(sql)->columnCount()) << sql;
}

TEST_F(Operations, BoundTheBytesOfTextsAndAnswers)
{
    m_Data.makeFile("disk/folder/file");
    import("disk", "disk");
    const std::string text(65000, 'x');
    const std::string numbers =
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 1100) ";
    m_Store.database().execute("INSERT INTO folder(disk_id, parent_id, name) " + numbers +
                               "SELECT disk_id, id, '" + text +
                               "' || i FROM n, folder WHERE name = 'folder'");
    m_Store.database().execute("INSERT INTO comment(company_id, commentcontent, commentstate) " + numbers +
                               "SELECT 1, '" + text + "' || i, '' FROM n");
    serve();
    const std::string folder = std::to_string(catalogueOf(m_Store).at("disk/folder/"));
    const auto page = [&](int start) {
        const std::string answer =
            ask("querySrcTableByParentSrcId",
                "parent_src_id: " + folder + " page_size: 2000 page_start: " + std::to_string(start));
        return static_cast<int>(std::count(answer.begin(), answer.end(), '{'));
    };
    const int first = page(0);
    EXPECT_EQ(first, 1033); // of 65 kB each, 64 MiB
    EXPECT_EQ(page(first), 1100 - first);
    EXPECT_EQ(ask("queryCommentInfo", "company_id: 1"),
              "failed: the list has more than 64 MiB, which is more than one answer may have");
    EXPECT_EQ(ask("addCommentInfo", "company_id: 1 commentcontent: '" + text + text + "'"), "result: -2");
    EXPECT_THAT(m_Errors, testing::HasSubstr("a comment may have 65536 bytes, not 130000"));
}

TEST(Query, RefusesSqlThatDoesNotFitTheMessages)
{
    centre::SqliteDatabase database(":memory:", centre::SqliteDatabase::Open::ReadWrite);
    const auto& method = *ledgerserver::LedgerServices::descriptor()->FindMethodByName("queryDataAddress");
    for (const char* sql : {"SELECT 1 AS elsewhere", "SELECT 1 AS id WHERE :elsewhere"})
        EXPECT_THROW(centre::Query(database, {"queryDataAddress", centre::Shape::List, sql}, method),
                     std::logic_error)
            << sql;
}

} // namespace
