#include "centre/database/SqliteDatabase.h"
#include "centre/store/Query.h"
#include "tests/centre/CentreSupport.h"

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
