#include "lumo/components/bulkhaul/Bulkhaul.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

TEST(Bulkhaul, EndingWhatNeverStartedDoesNothing)
{
    bulkhaul::EndBulkhaul();
    bulkhaul::EndBulkhaul();
}

TEST(Bulkhaul, RefusesNumbersBelowOne)
{
    EXPECT_FALSE(bulkhaul::StartBulkhaul(0, 5, bulkhaul::StatusFunction()));
    EXPECT_FALSE(bulkhaul::StartBulkhaul(5, -1, bulkhaul::StatusFunction()));
}

TEST(Bulkhaul, EveryStatusLineComesOnAThreadOfTheClientBeforeTheEnd)
{
    std::vector<std::string> lines;
    bool otherThread = true;
    const std::thread::id mine = std::this_thread::get_id();
    const auto status = [&](int, const std::string& line) {
        lines.push_back(line);
        otherThread = otherThread && std::this_thread::get_id() != mine;
    };
    ASSERT_TRUE(bulkhaul::StartBulkhaul(5, 5, status));
    ASSERT_TRUE(bulkhaul::StartBulkhaul(2, 3, status)); // again, while it runs
    bulkhaul::EndBulkhaul();
    const std::vector<std::string> expected = {
        "bulk transfer client started, 5 chunks and 5 files in flight",
        "bulk transfer client started, 2 chunks and 3 files in flight",
        "bulk transfer client ended",
    };
    EXPECT_EQ(lines, expected);
    EXPECT_TRUE(otherThread);

    const auto reckless = [&](int, const std::string& line) {
        lines.push_back(line);
        EXPECT_FALSE(bulkhaul::StartBulkhaul(1, 1, bulkhaul::StatusFunction()));
        bulkhaul::EndBulkhaul(); // from its own thread: neither a hang nor an end
        throw line;
    };
    ASSERT_TRUE(bulkhaul::StartBulkhaul(1, 1, reckless)); // a client that ended starts again
    bulkhaul::EndBulkhaul();
    EXPECT_EQ(lines.size(), 5u);
}
