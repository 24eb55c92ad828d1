#include "tests/centre/CentreSupport.h"

#include "hubline.pb.h"
#include "lumo/components/hubline/Hubline.h"

#include <atomic>
#include <thread>
#include <vector>

using centre::ExitCode;
using testing::HasSubstr;
using wirecall::Failure;

namespace {

const char kUserQuery[] = "queryUserTableByUserName";

TEST(Serve, AnswersOnlyUsersOfItsOwn)
{
    DataFolder data, other;
    centre::Centre centre(data.path(), {});
    const std::string added = centre::Store(data.path()).addUser("added while serving", "LUMO");
    const struct
    {
        std::string token;
        Failure failure;
        const char* reason;
    } cases[] = {
        {data.token(), Failure::None, ""},
        {added, Failure::None, ""},
        {"", Failure::Unauthenticated, "no token"},
        {other.token(), Failure::Unauthenticated, "not that of a user"},
        {data.token() + "x", Failure::Unauthenticated, "not that of a user"},
    };
    for (const auto& each : cases) {
        const auto channel = channelTo(centre.address(), each.token);
        wirecall::RpcController controller;
        ask(*channel, kUserQuery, "username: 'demo'", controller);
        EXPECT_EQ(controller.failure(), each.failure);
        EXPECT_THAT(controller.ErrorText(), HasSubstr(each.reason));

        hubline::HelloReq request;
        hubline::HelloRsp response;
        controller.Reset();
        hubline::HubServices_Stub(channel.get()).hello(&controller, &request, &response, nullptr);
        EXPECT_EQ(controller.failure(), each.failure);
        EXPECT_EQ(response.server(), each.failure == Failure::None ? "lumo-centre" : "");
    }
}

TEST(Serve, RefusesAnAddressThatOthersCanReachInPlainText)
{
    DataFolder data;
    const struct
    {
        const char* address;
        const char* reason;
    } cases[] = {
        {"0.0.0.0:0", "--tls-cert"},
        {"[::]:0", "--plain-text"},
        {"127.0.0.1", "HOST:PORT"},
        {"unix:/tmp/centre", "HOST:PORT"},
    };
    for (const auto& each : cases) {
        centre::ServeOptions options;
        options.address = each.address;
        expectError(ExitCode::WrongUse, each.reason, [&] { centre::Centre(data.path(), options); });
    }
}

TEST(Serve, GivesTheFolderFreeWhenItStops)
{
    DataFolder data;
    centre::Centre first(data.path(), {});
    expectError(ExitCode::InUse, "being served by process", [&] { centre::Centre(data.path(), {}); });
    first.stop();
    centre::Centre third(data.path(), {});
    EXPECT_NE(third.port(), 0);
}

TEST(Serve, AnswersManyThreadsWhileAnImportWrites)
{
    DataFolder data;
    centre::Centre centre(data.path(), {});
    centre::Store store(data.path());
    const std::uint32_t folder = store.addDisk("disk", "/srv", "LUMO");
    constexpr int kCallers = 8;
    std::vector<std::thread> callers;
    std::atomic<int> wrong{0};
    callers.reserve(kCallers);
    for (int i = 0; i < kCallers; ++i)
        callers.emplace_back([&] {
            const auto channel = channelTo(centre.address(), data.token());
            for (int k = 0; k < 50; ++k)
                if (ask(*channel, "queryDataAddressByID", "record_id: 1").rfind("result: 0", 0) != 0)
                    ++wrong;
        });
    store.addMadeUpFiles(folder, 20000);
    for (std::thread& caller : callers)
        caller.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace
