#include "hubline.pb.h"
#include "lumo/components/hubline/Hubline.h"
#include "tests/centre/CentreSupport.h"

#include <atomic>
#include <thread>
#include <vector>

using centre::ExitCode;
using testing::HasSubstr;
using wirecall::Failure;

namespace {

class Serve : public CentreTest
{
};

TEST_F(Serve, AnswersOnlyUsersOfItsOwn)
{
    const DataFolder other;
    serve();
    const std::string added = m_Store.addUser("added while serving", "LUMO");
    for (const auto& [token, reason] : {std::pair<std::string, std::string>(m_Data.token(), ""),
                                        {added, ""},
                                        {"", "no token"},
                                        {other.token(), "not that of a user"},
                                        {m_Data.token() + "x", "not that of a user"}}) {
        const Failure failure = reason.empty() ? Failure::None : Failure::Unauthenticated;
        callWith(token);
        wirecall::RpcController controller;
        ::ask(*m_Channel, "queryUserTableByUserName", "username: 'demo'", controller);
        EXPECT_EQ(controller.failure(), failure);
        EXPECT_THAT(controller.ErrorText(), HasSubstr(reason));

        hubline::HelloReq request;
        hubline::HelloRsp response;
        controller.Reset();
        hubline::HubServices_Stub(m_Channel.get()).hello(&controller, &request, &response, nullptr);
        EXPECT_EQ(controller.failure(), failure);
        EXPECT_EQ(response.server(), failure == Failure::None ? "lumo-centre" : "");
    }
}

TEST_F(Serve, RefusesOptionsThatCannotBe)
{
    m_Store.addBox("B1", "127.0.0.1:1");
    const auto refuses = [this](ExitCode code, const std::string& reason, auto set) {
        centre::ServeOptions options;
        set(options);
        expectError(code, reason, [&] { serve(options); });
    };
    // Others can reach it in plain text.
    for (const auto& [address, reason] : {std::pair("0.0.0.0:0", "--tls-cert"),
                                          {"[::]:0", "--plain-text"},
                                          {"127.0.0.1", "HOST:PORT"},
                                          {"unix:/tmp/centre", "HOST:PORT"}})
        refuses(ExitCode::WrongUse, reason, [&, text = address](auto& options) { options.address = text; });
    for (const auto& [fault, reason] :
         {std::pair("list=corrupt", "moves no data"), {"read=result:1", "no result that a fault could set"}})
        refuses(ExitCode::WrongUse, reason, [&, text = fault](auto& options) {
            options.boxes = {{"B1", "127.0.0.1:0"}};
            options.faults = {text};
        });
    refuses(ExitCode::WrongUse, "AnalyzeImage has no result that a fault could set",
            [](auto& options) { options.faults = {"AnalyzeImage=result:-1"}; });
    refuses(ExitCode::Failed, "no box B2", [](auto& options) { options.boxes = {{"B2", "127.0.0.1:0"}}; });
    for (const auto& [address, reason] :
         {std::pair("nowhere", "HOST:PORT"), {"0.0.0.0:0", "not 0.0.0.0"}, {"[::]:0", "not ::"}})
        refuses(ExitCode::WrongUse, reason, [&, text = address](auto& options) {
            options.boxes = {{"B1", text}};
        });
    EXPECT_EQ(m_Store.boxAddress("B1"), "127.0.0.1:1");
    for (const std::string& root : {m_Data.path(), m_Data.below(""), m_Data.below("none")}) {
        if (postgresql() != nullptr && root == m_Data.below(""))
            continue; // holds no data folder
        centre::ServeOptions options;
        options.copyRoots = {root};
        EXPECT_THROW(serve(options), centre::Error) << root;
    }
}

TEST_F(Serve, GivesTheFolderFreeWhenItStops)
{
    ONLY_WITH_A_DATA_FOLDER();
    serve();
    expectError(ExitCode::InUse, "being served by process", [&] { centre::Centre(m_Data.path(), {}); });
    m_Centre->stop();
    const centre::Centre third(m_Data.path(), {});
    EXPECT_NE(third.port(), 0);
}

TEST_F(Serve, AnswersManyThreadsWhileAnImportWrites)
{
    serve();
    const std::uint32_t folder = m_Store.addDisk("disk", "/srv", "LUMO");
    std::vector<std::thread> callers;
    std::atomic<int> wrong{0};
    for (int i = 0; i < 8; ++i)
        callers.emplace_back([&] {
            const auto channel = channelTo(m_Centre->address(), m_Data.token());
            for (int k = 0; k < 50; ++k)
                if (::ask(*channel, "queryDataAddressByID", "record_id: 1").rfind("result: 0", 0) != 0)
                    ++wrong;
        });
    m_Store.addMadeUpFiles(folder, 20000);
    for (std::thread& caller : callers)
        caller.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace
