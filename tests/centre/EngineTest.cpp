#include "centre/content/Copy.h"
#include "centre/content/Sample.h"
#include "centre/store/ReadPool.h"
#include "centre/store/Schema.h"
#include "tests/centre/CentreProgram.h"
#include "tests/centre/CentreSupport.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <utility>

using centre::ExitCode;
using centre::ValueType;
using testing::ElementsAre;

namespace {

#define ONLY_WITH_A_SERVER()                                                                                 \
    if (postgresql() == nullptr)                                                                             \
    GTEST_SKIP() << "of servers"

std::string textOf(centre::Statement& row, int column, ValueType type)
{
    if (type == ValueType::Real) {
        const auto number = row.real(column);
        return number ? std::to_string(*number) : "NULL";
    }
    if (type == ValueType::Bytes)
        return row.bytes(column).value_or("NULL");
    return row.text(column) ? row.string(column) : "NULL";
}

/// Each row of each table as a text.
std::vector<std::string> rowsOf(const std::string& place)
{
    const auto database = centre::openDatabase(place);
    std::vector<std::string> rows;
    for (const centre::Table& table : database->tables()) {
        std::string columns;
        for (const auto& [column, type] : table.columns)
            columns += (columns.empty() ? "" : ", ") + column;
        const auto all = database->prepare("SELECT " + columns + " FROM \"" + table.name + "\"");
        while (all->step()) {
            std::string row = table.name;
            for (std::size_t i = 0; i < table.columns.size(); ++i)
                row += "|" + textOf(*all, static_cast<int>(i), table.columns[i].second);
            rows.push_back(row);
        }
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

std::uint64_t copied(const std::string& from, const std::string& to)
{
    std::uint64_t all = 0;
    for (const auto& [table, count] : centre::copyCatalogue(from, to, [](std::uint64_t) {}))
        all += count;
    return all;
}

TEST(Copy, HoldsEveryRowOfEveryTableOnBothEngines)
{
    const EmptyFolder server; // a folder on SQLite
    const std::string first = server.below("first");
    const std::string last = server.below("last");
    centre::Store::create(first, "LUMO", "demo");
    {
        centre::Store store(first);
        centre::addSample(store, "LUMO", 300, 1, [](std::uint64_t) {});
        store.database().execute("INSERT INTO comment(company_id, commentcontent, commentstate) VALUES"
                                 " (1, 'a\\b\tc\r\n', '\\N')");
        for (int i = 0; i < 150; ++i)
            writeFile(server.below("disk/d" + std::to_string(i % 7) + "/中 " + std::to_string(i)), "x");
        centre::importTree(store, {server.below("disk"), "disk", "LUMO", ""});
    }
    const std::vector<std::string> rows = rowsOf(first);
    EXPECT_EQ(copied(first, server.path()), rows.size());
    EXPECT_EQ(rowsOf(server.path()), rows);
    EXPECT_EQ(copied(server.path(), last), rows.size());
    EXPECT_EQ(rowsOf(last), rows);

    for (const std::string& place : {server.path(), last}) {
        centre::Store store(place);
        EXPECT_EQ(store.addCompany("next"), 2u);
        expectError(ExitCode::NoDataFolder, "already", [&] { copied(first, place); });
    }
    EXPECT_EQ(centre::openDatabase(last)->value("SELECT count(*) FROM sat_bounds"),
              centre::openDatabase(first)->value("SELECT count(*) FROM sat_bounds"));
}

TEST(Copy, IsWholeOrNotAtAll)
{
    const EmptyFolder server;
    const std::string first = server.below("first");
    centre::Store::create(first, "LUMO", "demo");
    centre::openDatabase(first)->execute(
        "PRAGMA foreign_keys = OFF; INSERT INTO file(parent_id, name) VALUES (7, 'in no folder')");
    EXPECT_THROW(copied(first, server.path()), centre::Error);
    expectError(ExitCode::NoDataFolder, "lumo-centre", [&] { centre::openDatabase(server.path()); });
    centre::openDatabase(first)->setVersion(centre::schemaVersion() - 1);
    expectError(ExitCode::NoDataFolder, "lumo-centre migrate", [&] { copied(first, server.path()); });
}

TEST(Migration, ByTwoProcessesAtOnceBringsTheTablesUpToDateOnce)
{
    const EmptyFolder earlier;
    {
        const auto database = centre::createDatabase(earlier.path());
        centre::Transaction transaction(*database);
        centre::createSchema(*database, 5);
        database->execute(
            "INSERT INTO company(companyno) VALUES ('LUMO'); INSERT INTO \"user\"(username,"
            " company_id, token_hash, may_write) VALUES ('demo', 1, '1', 0), ('writer', 1, '2', 1)");
        transaction.commit();
    }
    if (postgresql() != nullptr)
        expectError(ExitCode::NoDataFolder, "lumo-centre migrate",
                    [&] { centre::openDatabase(earlier.path()); });
    auto other = std::async(std::launch::async, [&] { return centre::migrate(earlier.path()); });
    EXPECT_GE(centre::migrate(earlier.path()), 5);
    EXPECT_GE(other.get(), 5);
    const DataFolder fresh;
    const auto names = [](const std::string& place) {
        std::vector<std::string> all;
        for (const centre::Table& table : centre::openDatabase(place)->tables())
            for (const auto& [column, type] : table.columns)
                all.push_back(table.name + "." + column);
        return all;
    };
    EXPECT_EQ(names(earlier.path()), names(fresh.path()));
    EXPECT_EQ(centre::openDatabase(earlier.path())
                  ->value("SELECT count(*) FROM \"user\" JOIN token ON user_id = \"user\".id WHERE"
                          " (username, role) IN (VALUES ('demo', 'reader'), ('writer', 'writer'))"),
              "2");
}

class Server : public CentreTest
{
protected:
    /// Ends the connections for which a condition on pg_stat_activity and pg_locks holds.
    void cut(const std::string& condition)
    {
        value("SELECT count(pg_terminate_backend(pid, 10000)) FROM pg_stat_activity WHERE pid <> "
              "pg_backend_pid()"
              " AND datname = current_database() AND " +
              condition);
    }

    static std::string pid(centre::Connection& connection)
    {
        return connection.database().value("SELECT pg_backend_pid()");
    }
};

TEST_F(Server, LosesNoReadAndNoChangeWithAConnection)
{
    ONLY_WITH_A_SERVER();
    centre::ConnectionPool pool(m_Data.path());
    centre::ReadPool reads(pool, "");
    std::vector<std::int64_t> counts;
    reads.read(m_Data.token(), [&](centre::Connection& connection, const centre::User&) {
        const std::string self = pid(connection);
        const auto list = connection.database().prepareList("SELECT * FROM generate_series(1, 1000000)", {});
        for (counts.push_back(0); list->step(); ++counts.back())
            if (counts.size() == 1 && counts.back() == 10)
                cut("pid = " + self);
    });
    ASSERT_EQ(counts.size(), 2u);
    EXPECT_LT(counts[0], 1000000);
    EXPECT_EQ(counts[1], 1000000);

    int tries = 0;
    pool.change([&](centre::Connection& connection) {
        connection.database().execute("INSERT INTO company(companyno) VALUES ('once')");
        if (++tries == 1)
            cut("pid = " + pid(connection));
        connection.database().execute("INSERT INTO company(companyno) VALUES ('too')");
        return true;
    });
    EXPECT_EQ(tries, 2);
    EXPECT_EQ(value("SELECT string_agg(companyno, ' ' ORDER BY companyno) FROM company"), "LUMO once too");
}

TEST_F(Server, RunsChangesAgainThatMeetEachOther)
{
    ONLY_WITH_A_SERVER();
    m_Store.addCompany("other");
    centre::ConnectionPool pool(m_Data.path());
    std::promise<void> begun[2];
    std::atomic<int> tries{0};
    const auto change = [&](int own, const std::string& first, const std::string& second) {
        bool isFirst = true;
        pool.change([&](centre::Connection& connection) {
            const std::string set = "UPDATE company SET companyno = companyno || '!' WHERE id = ";
            ++tries;
            connection.database().execute(set + first);
            if (std::exchange(isFirst, false)) {
                begun[own].set_value();
                begun[1 - own].get_future().wait();
            }
            connection.database().execute(set + second);
            return true;
        });
    };
    auto other = std::async(std::launch::async, change, 0, "1", "2");
    change(1, "2", "1");
    other.get();
    EXPECT_EQ(tries, 3);
    EXPECT_EQ(value("SELECT string_agg(companyno, ' ' ORDER BY id) FROM company"), "LUMO!! other!!");
}

TEST_F(Server, EndsABoxWhoseLockAnotherProcessHasTaken)
{
    ONLY_WITH_A_SERVER();
    m_Store.addBox("B1", "127.0.0.1:1");
    const std::string locked = "pid IN (SELECT pid FROM pg_locks WHERE locktype = 'advisory' AND granted)";
    const std::string holder =
        "SELECT pid FROM pg_stat_activity WHERE datname = current_database() AND " + locked;
    Process box(centreCommand({"serve-box", m_Data.path(), "B1", "--listen", "127.0.0.1:0"}));
    ASSERT_NE(servingAddress(box), "");
    const std::string before = value(holder);

    cut(locked); // it takes the lock again
    for (std::string now = before; now.empty() || now == before; now = value(holder))
        std::this_thread::yield();

    centre::PostgresDatabase waits(m_Data.path()); // is next
    auto taken = std::async(std::launch::async, [&] {
        waits.execute(
            "SET lock_timeout = 0; SELECT pg_advisory_lock(hashtextextended('box B1', 1280658767))");
    });
    while (value("SELECT count(*) FROM pg_locks WHERE locktype = 'advisory' AND NOT granted") == "0")
        std::this_thread::yield();
    cut(locked);
    taken.get();
    EXPECT_EQ(box.wait(), static_cast<int>(ExitCode::InUse));
}

TEST_F(Server, HasNoMoreConnectionsThanThePoolMayOpen)
{
    ONLY_WITH_A_SERVER();
    centre::ConnectionPool pool(m_Data.path(), 1);
    std::vector<std::future<std::string>> pids;
    for (int i = 0; i < 4; ++i)
        pids.push_back(
            std::async(std::launch::async, [&] { return pid(*centre::ConnectionPool::Lease(pool)); }));
    const std::string first = pids[0].get();
    for (int i = 1; i < 4; ++i)
        EXPECT_EQ(pids[i].get(), first);
    const auto usage = pool.usage();
    EXPECT_THAT((std::vector<int>{usage.open, usage.inUse, usage.waiting, usage.most}),
                ElementsAre(1, 0, 0, 1));
}

} // namespace
