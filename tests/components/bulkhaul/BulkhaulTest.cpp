#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/components/bulkhaul/TransferEnd.h"
#include "lumo/components/wirecall/RpcChannel.h"

#include <gtest/gtest.h>

#include <stdexcept>
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

TEST(Bulkhaul, AnEndFunctionThatUnsetsItselfAndThrowsIsCalledOnceAndHarmsNothing)
{
    std::string error;
    wirecall::ChannelOptions options;
    options.address = "127.0.0.1:1";
    const auto channel = wirecall::openChannel(options, error);
    std::string reason;
    bulkhaul::setEndFunction([&](const bulkhaul::TransferEnd& end) {
        bulkhaul::setEndFunction({});
        reason += end.reason;
        throw std::runtime_error(reason);
    });
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(bulkhaul::Upload(channel, "/x", "none\n\xFF", false, {}, nullptr, nullptr),
                  bulkhaul::kNotFound);
    EXPECT_EQ(reason, "none \uFFFD: No such file or directory");
}
