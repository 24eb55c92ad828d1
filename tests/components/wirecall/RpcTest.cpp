#include "lumo/components/wirecall/Closures.h"
#include "lumo/components/wirecall/RpcController.h"
#include "tests/support/Awaited.h"
#include "tests/support/Channel.h"
#include "tests/support/TestService.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

using google::protobuf::Closure;
using google::protobuf::NewCallback;
using hubline::HelloReq;
using hubline::HelloRsp;
using wirecall::Failure;
using wirecall::RpcController;
using wirecall::ServerCall;

namespace {

/// Makes one call over a channel of its own.
HelloRsp call(const std::string& address, RpcController& controller, const std::string& token = {})
{
    const auto channel = channelTo(address, token);
    hubline::HubServices_Stub stub(channel.get());
    HelloReq request;
    request.set_client("test");
    HelloRsp response;
    response.set_server("old content");
    stub.hello(&controller, &request, &response, nullptr);
    return response;
}

void hold(Closure* done, const ServerCall*)
{
    done->Run();
}

/// Answers when the caller has given up, not before.
void answerOnCancel(ServerCall& serverCall, const HelloReq&, HelloRsp&, Closure* done)
{
    serverCall.NotifyOnCancel(NewCallback(&hold, done, static_cast<const ServerCall*>(&serverCall)));
}

/// A number of calls that have not ended.
class Countdown : public Awaited<int>
{
public:
    using Awaited::Awaited;
    void tick()
    {
        change([](int& left) { --left; });
    }
    void wait()
    {
        Awaited::wait([](int left) { return left == 0; });
    }
};

/// An asynchronous call, which ends on another thread.
struct PendingCall
{
    RpcController controller;
    HelloRsp response;
    Countdown* countdown = nullptr;
    std::thread::id thread;

    /// The stub and `request` need not outlive this.
    void start(wirecall::RpcChannel& channel, const HelloReq& request, Countdown& end)
    {
        countdown = &end;
        hubline::HubServices_Stub(&channel).hello(&controller, &request, &response,
                                                  NewCallback(this, &PendingCall::ended));
    }
    void ended()
    {
        thread = std::this_thread::get_id();
        countdown->tick();
    }
};

} // namespace

TEST(Rpc, AnAnswerOfAnySizeReplacesTheResponseAndTheTokenTravels)
{
    const std::string large(40U << 20, 'x');
    TestService service(
        [&](ServerCall& serverCall, const HelloReq& request, HelloRsp& response, Closure* done) {
            if (!serverCall.token().empty())
                response.set_server(large + request.client() + serverCall.token() + serverCall.method());
            done->Run();
        });
    TestServer server(service);
    ASSERT_TRUE(server.started()) << server.error();
    RpcController controller;
    EXPECT_FALSE(call(server.address(), controller).has_server());
    EXPECT_EQ(call(server.address(), controller, "t0ken").server(),
              large + "testt0kenhubline.HubServices.hello");
    EXPECT_FALSE(controller.Failed());
    EXPECT_TRUE(controller.IsRequestSent());
}

TEST(Rpc, AReasonComesBesideItsAnswerOnlyAndIsCutAtACharacter)
{
    TestService service([](ServerCall& serverCall, const HelloReq&, HelloRsp& response, Closure* done) {
        serverCall.setReason(serverCall.token());
        if (serverCall.token().empty())
            serverCall.setReason("理由" + std::string(wirecall::kLongestReason - 7, 'x') + "由");
        response.set_server("refused");
        done->Run();
    });
    TestServer server(service);
    RpcController controller;
    EXPECT_EQ(call(server.address(), controller).server(), "refused");
    EXPECT_EQ(controller.reason(), "理由" + std::string(wirecall::kLongestReason - 7, 'x'));
    call(server.address(), controller, "no");
    EXPECT_EQ(controller.reason(), "no");
    controller.Reset();
    EXPECT_EQ(controller.reason(), "");
}

TEST(Rpc, ACallEndsAtItsTimeLimitOrWithoutAConnectionAndMayOutliveItsChannel)
{
    constexpr long long kConnectsWithin = 1500; // milliseconds, enough for a connection on a busy machine
    std::string address;
    const auto start = [&](PendingCall& pending, long long timeout) {
        Countdown end(1);
        pending.controller.SetTimeout(timeout);
        pending.start(*channelTo(address), HelloReq::default_instance(), end); // the channel is gone then
        end.wait();
    };
    RpcController waited, waitedUnsent;
    PendingCall returned, returnedUnsent, answered;
    {
        TestService service(answerOnCancel);
        TestServer server(service);
        address = server.address();
        waited.SetTimeout(kConnectsWithin);
        call(address, waited);
        start(returned, kConnectsWithin);
    }
    call(address, waitedUnsent);
    start(returnedUnsent, 5000);
    for (const RpcController* each : {&waited, &returned.controller}) {
        EXPECT_EQ(each->failure(), Failure::TimeLimit);
        EXPECT_EQ(each->ErrorText(), "Deadline Exceeded");
        EXPECT_TRUE(each->IsRequestSent());
    }
    for (const RpcController* each : {&waitedUnsent, &returnedUnsent.controller}) {
        EXPECT_EQ(each->failure(), Failure::NoConnection);
        EXPECT_FALSE(each->ErrorText().empty());
        EXPECT_FALSE(each->IsRequestSent());
    }
    TestService service;
    TestServer server(service);
    address = server.address();
    start(answered, 0);
    EXPECT_FALSE(answered.controller.Failed()) << answered.controller.ErrorText();
}

TEST(Rpc, ARequestThatIsTooLargeFailsUnsent)
{
    TestService service;
    TestServer server(service);
    const auto channel = channelTo(server.address());
    HelloReq request;
    request.set_client(std::string(257U << 20, 'x'));
    RpcController waited;
    HelloRsp response;
    hubline::HubServices_Stub(channel.get()).hello(&waited, &request, &response, nullptr);
    PendingCall returned;
    Countdown end(1);
    returned.start(*channel, request, end);
    end.wait();
    for (const RpcController* each : {&waited, &returned.controller}) {
        EXPECT_EQ(each->ErrorText(),
                  "the request has 269484038 bytes, more than the 268435456 that a message may have");
        EXPECT_TRUE(each->Failed());
        EXPECT_FALSE(each->IsRequestSent());
    }
    EXPECT_NE(returned.thread, std::this_thread::get_id());
}

TEST(Rpc, AFailureHasTheServersReasonAndTheControllerServesTheNextCall)
{
    std::atomic<int> calls{0};
    TestService service([&](ServerCall& serverCall, const HelloReq&, HelloRsp&, Closure* done) {
        const int number = ++calls;
        if (number == 1)
            serverCall.SetFailed("not today");
        else if (number == 2)
            throw std::runtime_error("out of order");
        done->Run();
    });
    TestServer server(service, false);
    const struct
    {
        const char* token;
        Failure failure;
        const char* text;
    } cases[] = {{"wrong", Failure::Unauthenticated, "wrong token"},
                 {TestServer::kToken, Failure::Other, "not today"},
                 {TestServer::kToken, Failure::Other, "out of order"},
                 {TestServer::kToken, Failure::None, ""}};
    RpcController controller;
    for (const auto& c : cases) {
        call(server.address(), controller, c.token);
        EXPECT_EQ(controller.failure(), c.failure);
        EXPECT_EQ(controller.ErrorText(), c.text);
    }
    controller.SetTimeout(1000);
    controller.SetFailed("by the caller");
    EXPECT_TRUE(controller.Failed());
    controller.Reset();
    EXPECT_FALSE(controller.Failed());
    EXPECT_EQ(controller.timeout(), 0);
}

TEST(Rpc, AConnectionThatBreaksDuringACallFailsIt)
{
    Countdown arrived(1);
    TestService service(
        [&](ServerCall& serverCall, const HelloReq& request, HelloRsp& response, Closure* done) {
            answerOnCancel(serverCall, request, response, done);
            arrived.tick();
        });
    TestServer server(service);
    const std::string address = server.address();
    RpcController controller;
    std::thread caller([&] { call(address, controller); });
    arrived.wait();
    server.stop(0);
    caller.join();
    EXPECT_TRUE(controller.Failed());
    EXPECT_TRUE(controller.IsRequestSent());
}

TEST(Rpc, WhatTheCallsOfAUserHoldIsBounded)
{
    constexpr int kHeld = 15; // of 8 MiB each; 128 MiB may be held
    const std::string large(8U << 20, 'x');
    Countdown arrived(kHeld);
    std::mutex mutex;
    std::vector<Closure*> held;
    TestService service(
        [&](ServerCall& serverCall, const HelloReq& request, HelloRsp& response, Closure* done) {
            if (request.client() == "answer")
                response.set_server(large + large);
            if (request.client().size() < large.size() || serverCall.token() == "other") {
                done->Run();
                return;
            }
            const std::lock_guard<std::mutex> lock(mutex);
            held.push_back(done);
            arrived.tick();
        });
    TestServer server(service);
    const auto channel = channelTo(server.address(), "token");
    std::vector<PendingCall> calls(kHeld);
    HelloReq request;
    request.set_client(large);
    Countdown ended(kHeld);
    for (PendingCall& each : calls)
        each.start(*channel, request, ended);
    arrived.wait();

    const auto outcomeOf = [&](const std::string& client, const std::string& token) {
        HelloReq oneMore;
        oneMore.set_client(client);
        HelloRsp response;
        RpcController controller;
        const auto other = channelTo(server.address(), token);
        hubline::HubServices_Stub(other.get()).hello(&controller, &oneMore, &response, nullptr);
        return controller.ErrorText();
    };
    EXPECT_EQ(outcomeOf(large, "token"), "the calls of this user hold too much memory; try again later");
    EXPECT_EQ(outcomeOf("answer", "token"), "the calls of this user hold too much memory; try again later");
    EXPECT_EQ(outcomeOf("small", "token"), "");
    EXPECT_EQ(outcomeOf(large, "other"), "");
    for (Closure* done : held)
        done->Run();
    ended.wait();
    for (const PendingCall& each : calls)
        EXPECT_FALSE(each.controller.Failed()) << each.controller.ErrorText();
    while (!outcomeOf("answer", "token").empty()) { // until the server has seen that all were sent
    }
}

TEST(Rpc, AThousandAsynchronousCallsEndOnceEach)
{
    TestService service([](ServerCall&, const HelloReq& request, HelloRsp& response, Closure* done) {
        response.set_server(request.client());
        done->Run();
    });
    TestServer server(service);
    const auto channel = channelTo(server.address());
    std::vector<PendingCall> calls(1000);
    Countdown countdown(1000);
    for (PendingCall& each : calls) {
        HelloReq request;
        request.set_client("test");
        each.start(*channel, request, countdown);
    }
    countdown.wait();
    for (const PendingCall& each : calls)
        ASSERT_EQ(each.response.server(), "test") << each.controller.ErrorText();
}

TEST(Rpc, AsManyMethodsAsThreadsWaitAtOnceAndTheOthersFollow)
{
    constexpr int kThreads = 4; // of a TestServer
    Awaited<int> arrived;
    TestService service([&](ServerCall&, const HelloReq&, HelloRsp&, Closure* done) {
        arrived.change([](int& count) { ++count; });
        arrived.wait([](int count) { return count >= kThreads; });
        done->Run();
    });
    TestServer server(service);
    const auto channel = channelTo(server.address());
    for (int round = 0; round < 3; ++round) { // the server learns that the method takes long
        arrived.exchange(0);
        std::vector<PendingCall> calls(std::size_t(3) * kThreads);
        Countdown countdown(3 * kThreads);
        for (PendingCall& each : calls)
            each.start(*channel, HelloReq::default_instance(), countdown);
        countdown.wait();
        for (const PendingCall& each : calls)
            EXPECT_FALSE(each.controller.Failed()) << each.controller.ErrorText();
    }
}

TEST(Rpc, WhatCanNotBeOpenedSaysWhy)
{
    const struct
    {
        const char* address;
        const char* token;
        const char* root;
        const char* error;
    } cases[] = {
        {"nowhere", "", "", "\"nowhere\" is not an address of the form host:port"},
        {"localhost:1", "two words", "",
         "the token can't be sent: it has blanks, line ends, control characters or characters that are not "
         "ASCII"},
        {"192.0.2.1:1", "t0ken", nullptr, "a token may not travel to 192.0.2.1:1 in plain text"},
        {"localhost:1", "", "/nonexistent.pem", "can't read /nonexistent.pem: No such file or directory"},
        {"localhost:1", "", "/proc/self/status", "/proc/self/status has no PEM block"},
    };
    for (const auto& c : cases) {
        wirecall::ChannelOptions options;
        options.address = c.address;
        options.token = c.token;
        options.tls = c.root != nullptr;
        options.rootCertificate = c.root != nullptr ? c.root : "";
        std::string error;
        EXPECT_FALSE(wirecall::openChannel(options, error));
        EXPECT_EQ(error, c.error);
    }
}

TEST(MethodClosure, KeepsACopyOfAReferenceAndRunsOnce)
{
    struct Receiver
    {
        void receive(int number, const std::string& text, std::string* target)
        {
            *target += std::to_string(number) + text;
        }
    } receiver;
    std::string target;
    std::string text = "kept";
    auto* closure =
        new wirecall::MethodClosure_Bind3<true, Receiver*, Receiver, int, const std::string&, std::string*>(
            &receiver, &Receiver::receive, 7, text, &target);
    EXPECT_TRUE(closure->deletesItself());
    text = "changed";
    closure->Run(); // deletes itself, or the leak check fails
    EXPECT_EQ(target, "7kept");
}

TEST(RpcServer, APortInUseIsRefused)
{
    TestService service;
    TestServer server(service);
    wirecall::RpcServer second;
    wirecall::RpcServer::Options options;
    options.address = server.address();
    std::string error;
    EXPECT_FALSE(second.start(options, error));
    EXPECT_EQ(error.find("can't listen on " + server.address()), 0u) << error;
    server.stop(); // the port is free now
    EXPECT_TRUE(second.start(options, error)) << error;
    second.stop();
    EXPECT_TRUE(second.start(options, error)) << error;
}
