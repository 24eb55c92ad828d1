#include "lumo/components/wirecall/Closures.h"
#include "lumo/components/wirecall/RpcController.h"
#include "tests/support/Awaited.h"
#include "tests/support/Channel.h"
#include "tests/support/TestService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <list>
#include <mutex>
#include <thread>
#include <vector>

using google::protobuf::Closure;
using hubline::HelloReq;
using hubline::HelloRsp;
using testing::HasSubstr;
using wirecall::RpcController;
using wirecall::RpcServer;
using wirecall::ServerCall;

namespace {

/// Says hello as a user over a connection of its own; the failure's text, empty for none.
std::string hello(const std::string& address, const std::string& user)
{
    const auto channel = channelTo(address, user);
    RpcController controller;
    controller.SetTimeout(20000);
    HelloReq request;
    HelloRsp response;
    hubline::HubServices_Stub(channel.get()).hello(&controller, &request, &response, nullptr);
    return controller.ErrorText();
}

/// A bare connection to a port of this machine.
class Connection
{
public:
    explicit Connection(int port) : m_Socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(::connect(m_Socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }
    ~Connection() { ::close(m_Socket); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// What the server sends first: its settings, and perhaps that it wants no connection.
    std::string firstBytes() const
    {
        char bytes[256];
        const ssize_t length = ::recv(m_Socket, bytes, sizeof bytes, 0);
        return length < 0 ? "nothing" : std::string(bytes, static_cast<std::size_t>(length));
    }

private:
    const int m_Socket;
};

class LimitedServer : public testing::Test
{
protected:
    void start(int connections, int connectionsOfAddress, int callsOfUser)
    {
        RpcServer::Options options;
        options.address = "127.0.0.1:0";
        options.threads = 4;
        options.connections = connections;
        options.connectionsOfAddress = connectionsOfAddress;
        options.callsOfUser = callsOfUser;
        // Two tokens of one user differ after the dash.
        options.authenticate = [](ServerCall& call, std::string&) {
            call.setUser(call.token().substr(0, call.token().find('-')), "");
            return true;
        };
        m_Server.add(&m_Service);
        std::string error;
        ASSERT_TRUE(m_Server.start(options, error)) << error;
    }
    std::string address() const { return "127.0.0.1:" + std::to_string(m_Server.port()); }

    /// The calls of user "greedy" wait until there is an answer for all; others are answered at once.
    void answer(ServerCall& call, Closure* done)
    {
        if (call.user() == "greedy") {
            m_Running.change([](int& running) { ++running; });
            m_MayEnd.wait([](bool may) { return may; });
        }
        done->Run();
    }

    TestService m_Service{
        [this](ServerCall& call, const HelloReq&, HelloRsp&, Closure* done) { answer(call, done); }};
    Awaited<int> m_Running;
    Awaited<bool> m_MayEnd;
    RpcServer m_Server;
};

TEST_F(LimitedServer, RefusesConnectionsBeyondItsLimitsAndSaysWhy)
{
    const struct
    {
        int all;
        int ofAddress;
        const char* reason;
    } cases[] = {{2, 0, "the server has as many connections as it may"},
                 {0, 2, "the server has as many connections of this address as it may"}};
    for (const auto& c : cases) {
        start(c.all, c.ofAddress, 0);
        std::list<Connection> open;
        for (int i = 0; i < 2; ++i)
            EXPECT_THAT(open.emplace_back(m_Server.port()).firstBytes(), Not(HasSubstr("connections")));
        EXPECT_THAT(Connection(m_Server.port()).firstBytes(), HasSubstr(c.reason));
        EXPECT_THAT(hello(address(), "user"), HasSubstr("it has too many connections"));
        EXPECT_EQ(m_Server.load().connections, 2);
        EXPECT_GE(m_Server.load().refusedConnections, 2U);
        open.pop_back();
        while (!hello(address(), "user").empty()) { // until the server has seen that one is gone
        }
        m_Server.stop();
    }
}

TEST_F(LimitedServer, AnswersOthersWhileAUserHasAllThatItMayHave)
{
    constexpr int kCalls = 10; // more than the four methods of one user that run at once
    start(0, 0, kCalls);
    std::vector<std::thread> greedy;
    std::mutex mutex;
    std::vector<std::string> outcomes;
    for (int i = 0; i < kCalls; ++i)
        greedy.emplace_back([&, token = "greedy-" + std::to_string(i)] {
            const std::string outcome = hello(address(), token);
            const std::lock_guard<std::mutex> lock(mutex);
            outcomes.push_back(outcome);
        });
    m_Running.wait([](int running) { return running == 4; });
    while (m_Server.load().runningCalls < kCalls)
        std::this_thread::yield();
    EXPECT_EQ(hello(address(), "greedy-more"), "this user has 10 calls under way already; try again later");
    EXPECT_EQ(hello(address(), "other"), "");
    EXPECT_EQ(m_Running.exchange(0), 4); // the others of the greedy one still wait
    m_MayEnd.change([](bool& may) { may = true; });
    for (std::thread& each : greedy)
        each.join();
    EXPECT_THAT(outcomes, testing::Each(""));
    EXPECT_EQ(hello(address(), "greedy-more"), "");
}

} // namespace
