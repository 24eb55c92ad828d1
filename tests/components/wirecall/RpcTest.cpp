#include "lumo/components/wirecall/RpcChannel.h"
#include "lumo/components/wirecall/RpcController.h"
#include "tests/support/Certificate.h"
#include "tests/support/TestService.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
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

boost::shared_ptr<wirecall::RpcChannel> channelTo(const std::string& address, const std::string& token = {})
{
    wirecall::ChannelOptions options;
    options.address = address;
    options.token = token;
    std::string error;
    return wirecall::openChannel(options, error);
}

/// One call over a channel of its own; the controller tells the rest.
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

/// Answers no sooner than the caller has given up.
void answerOnCancel(ServerCall& serverCall, const HelloReq&, HelloRsp&, Closure* done)
{
    serverCall.NotifyOnCancel(NewCallback(&hold, done, static_cast<const ServerCall*>(&serverCall)));
}

class Countdown
{
public:
    explicit Countdown(int count) : m_Left(count) {}
    void tick()
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (--m_Left == 0)
            m_Zero.notify_all();
    }
    void wait()
    {
        std::unique_lock<std::mutex> lock(m_Mutex);
        m_Zero.wait(lock, [this] { return m_Left <= 0; });
    }

private:
    std::mutex m_Mutex;
    std::condition_variable m_Zero;
    int m_Left;
};

} // namespace

TEST(Rpc, AnAnswerReplacesTheResponseAndTheTokenTravels)
{
    TestService service(
        [](ServerCall& serverCall, const HelloReq& request, HelloRsp& response, Closure* done) {
            response.set_server(request.client() + " " + serverCall.token() + " " + serverCall.method());
            done->Run();
        });
    TestServer server(service);
    ASSERT_TRUE(server.started()) << server.error();
    RpcController controller;
    EXPECT_EQ(call(server.address(), controller, "t0ken").server(), "test t0ken hubline.HubServices.hello");
    EXPECT_FALSE(controller.Failed());
    EXPECT_TRUE(controller.IsRequestSent());
}

TEST(Rpc, AnEmptyAnswerClearsTheResponse)
{
    TestService service;
    TestServer server(service);
    RpcController controller;
    EXPECT_FALSE(call(server.address(), controller).has_server());
}

TEST(Rpc, AnAnswerOfManyMegabytesArrives)
{
    const std::string large(40U << 20, 'x');
    TestService service([&](ServerCall&, const HelloReq&, HelloRsp& response, Closure* done) {
        response.set_server(large);
        done->Run();
    });
    TestServer server(service);
    RpcController controller;
    EXPECT_EQ(call(server.address(), controller).server(), large);
}

TEST(Rpc, ACallEndsAtItsTimeLimit)
{
    TestService service(answerOnCancel);
    TestServer server(service);
    RpcController controller;
    controller.SetTimeout(100);
    call(server.address(), controller);
    EXPECT_EQ(controller.failure(), Failure::TimeLimit);
    EXPECT_EQ(controller.ErrorText(), "Deadline Exceeded");
    EXPECT_TRUE(controller.IsRequestSent());
}

TEST(Rpc, ACallToNobodyFailsUnsent)
{
    std::string address;
    {
        TestService service;
        TestServer server(service);
        address = server.address();
    }
    RpcController controller;
    call(address, controller);
    EXPECT_EQ(controller.failure(), Failure::NoConnection);
    EXPECT_FALSE(controller.IsRequestSent());
    EXPECT_FALSE(controller.ErrorText().empty());
}

TEST(Rpc, ARequestThatIsTooLargeFailsUnsent)
{
    struct Call
    {
        RpcController controller;
        HelloRsp response;
        Countdown over{1};
        std::thread::id thread;
        void ended()
        {
            thread = std::this_thread::get_id();
            over.tick();
        }
    };
    TestService service;
    TestServer server(service);
    const auto channel = channelTo(server.address());
    hubline::HubServices_Stub stub(channel.get());
    HelloReq request;
    request.set_client(std::string(257U << 20, 'x'));
    Call waited, returned;
    stub.hello(&waited.controller, &request, &waited.response, nullptr);
    stub.hello(&returned.controller, &request, &returned.response, NewCallback(&returned, &Call::ended));
    returned.over.wait();
    for (const Call* each : {&waited, &returned}) {
        EXPECT_EQ(each->controller.ErrorText(),
                  "the request has 269484038 bytes, more than the 268435456 that a message may have");
        EXPECT_TRUE(each->controller.Failed());
        EXPECT_FALSE(each->controller.IsRequestSent());
    }
    EXPECT_NE(returned.thread, std::this_thread::get_id());
}

TEST(Rpc, AControllerServesTheNextCallAfterReset)
{
    TestService service;
    TestServer server(service);
    RpcController controller;
    controller.SetTimeout(1000);
    controller.SetFailed("before");
    EXPECT_TRUE(controller.Failed());
    controller.Reset();
    EXPECT_FALSE(controller.Failed());
    EXPECT_EQ(controller.timeout(), 0);
    call(server.address(), controller);
    EXPECT_FALSE(controller.Failed());
}

TEST(Rpc, TheServerTellsWhyItRefuses)
{
    TestService service([](ServerCall& serverCall, const HelloReq&, HelloRsp&, Closure* done) {
        serverCall.SetFailed("not today");
        done->Run();
    });
    TestServer server(service, false);
    RpcController controller;
    call(server.address(), controller, "wrong");
    EXPECT_EQ(controller.failure(), Failure::Unauthenticated);
    EXPECT_EQ(controller.ErrorText(), "wrong token");
    call(server.address(), controller, TestServer::kToken);
    EXPECT_EQ(controller.failure(), Failure::Other);
    EXPECT_EQ(controller.ErrorText(), "not today");
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

TEST(Rpc, AThousandAsynchronousCallsEndOnceEach)
{
    struct Call
    {
        RpcController controller;
        HelloRsp response;
        Countdown* countdown;
        std::atomic<int>* succeeded;
        void ended()
        {
            if (!controller.Failed() && response.server() == "test")
                ++*succeeded;
            countdown->tick();
        }
    };
    TestService service([](ServerCall&, const HelloReq& request, HelloRsp& response, Closure* done) {
        response.set_server(request.client());
        done->Run();
    });
    TestServer server(service);
    const auto channel = channelTo(server.address());
    Countdown countdown(1000);
    std::atomic<int> succeeded{0};
    std::vector<std::unique_ptr<Call>> calls;
    for (int i = 0; i < 1000; ++i) {
        calls.push_back(std::make_unique<Call>());
        calls.back()->countdown = &countdown;
        calls.back()->succeeded = &succeeded;
        hubline::HubServices_Stub stub(channel.get()); // dies before the answer, with its request
        HelloReq request;
        request.set_client("test");
        stub.hello(&calls.back()->controller, &request, &calls.back()->response,
                   NewCallback(calls.back().get(), &Call::ended));
    }
    countdown.wait();
    EXPECT_EQ(succeeded, 1000);
}

TEST(Rpc, AnAsynchronousCallOutlivesItsChannelAndTellsItsFailure)
{
    struct Call
    {
        RpcController controller;
        HelloRsp response;
        Countdown over{1};
        void ended() { over.tick(); }
    };
    const auto start = [](Call& pending, const std::string& address, long long timeout) {
        const auto channel = channelTo(address); // gone before the call has ended
        hubline::HubServices_Stub stub(channel.get());
        pending.controller.SetTimeout(timeout);
        stub.hello(&pending.controller, &HelloReq::default_instance(), &pending.response,
                   NewCallback(&pending, &Call::ended));
    };
    std::string nobody;
    Call stalled, unsent, answered;
    {
        TestService service(answerOnCancel);
        TestServer server(service);
        nobody = server.address();
        start(stalled, server.address(), 200);
        stalled.over.wait();
    }
    EXPECT_EQ(stalled.controller.failure(), Failure::TimeLimit);
    start(unsent, nobody, 5000);
    unsent.over.wait();
    EXPECT_EQ(unsent.controller.failure(), Failure::NoConnection);
    EXPECT_FALSE(unsent.controller.IsRequestSent());
    TestService service;
    TestServer server(service);
    start(answered, server.address(), 0);
    answered.over.wait();
    EXPECT_FALSE(answered.controller.Failed()) << answered.controller.ErrorText();
}

TEST(RpcServer, AMethodThatThrowsRefusesItsCallAndNoOther)
{
    TestService service(
        [](ServerCall&, const HelloReq&, HelloRsp&, Closure*) { throw std::runtime_error("out of order"); });
    TestServer server(service);
    for (int i = 0; i < 2; ++i) {
        RpcController controller;
        call(server.address(), controller);
        EXPECT_EQ(controller.ErrorText(), "out of order");
    }
}

TEST(Rpc, TlsVerifiesTheCertificate)
{
    const Certificate certificate;
    ASSERT_TRUE(certificate.made());
    TestService service;
    TestServer server(service, true, certificate.certificate(), certificate.key());
    ASSERT_TRUE(server.started()) << server.error();
    const struct
    {
        bool tls;
        std::string root;
        bool succeeds;
    } cases[] = {{true, certificate.certificate(), true}, {true, "", false}, {false, "", false}};
    for (const auto& c : cases) {
        wirecall::ChannelOptions options;
        options.address = server.address();
        options.tls = c.tls;
        options.rootCertificate = c.root;
        std::string error;
        const auto channel = wirecall::openChannel(options, error);
        ASSERT_TRUE(channel) << error;
        hubline::HubServices_Stub stub(channel.get());
        RpcController controller;
        controller.SetTimeout(5000);
        HelloRsp response;
        stub.hello(&controller, &HelloReq::default_instance(), &response, nullptr);
        EXPECT_EQ(!controller.Failed(), c.succeeds) << controller.ErrorText();
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
        {"localhost:1", "", "/nonexistent.pem", "can't read /nonexistent.pem"},
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
