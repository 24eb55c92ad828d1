#include "components/wirecall/Streams.h"
#include "streamtest.pb.h"
#include "tests/support/Awaited.h"
#include "tests/support/Channel.h"
#include "tests/support/CuttingProxy.h"
#include "tests/support/TestService.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using google::protobuf::Closure;
using google::protobuf::NewCallback;
using streamtest::Part;
using wirecall::Failure;
using wirecall::OutgoingBuffer;
using wirecall::Payload;
using wirecall::RpcController;
using wirecall::StreamReader;
using wirecall::StreamWriter;

namespace {

constexpr std::size_t kMiB = std::size_t(1024) * 1024;

std::string textOf(const Payload& data)
{
    std::string text;
    for (const iovec& piece : data.pieces())
        text.append(static_cast<const char*>(piece.iov_base), piece.iov_len);
    EXPECT_EQ(text.size(), data.size());
    return text;
}

OutgoingBuffer bufferOf(const std::string& text)
{
    OutgoingBuffer buffer(text.size());
    std::memcpy(buffer.data(), text.data(), text.size());
    return buffer;
}

std::string content(std::size_t size, std::size_t number)
{
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        text[i] = static_cast<char>(i * 7 + i / 1000 + number);
    return text;
}

void answer(Closure* done, google::protobuf::RpcController*)
{
    done->Run();
}

/// Streams whose ends are functions of the test's choice. Asked with the note "stall", nothing comes until
/// the caller gives up; with "ordinary", an answer as of any other method.
class StreamService : public streamtest::Streams
{
public:
    using Controller = google::protobuf::RpcController;
    /// Fills the next message, or returns false.
    using Next = std::function<bool(Controller& call, const Part& request, Part& head, OutgoingBuffer& data)>;
    /// Takes a message.
    using Take = std::function<bool(Controller& call, const Part& head, const Payload& data, Part& response)>;
    using Finish = std::function<void(Part& response)>;

    void onSend(Next function)
    {
        live.change([&](int&) { next = std::move(function); });
    }
    void onReceive(Take function, Finish atEnd)
    {
        live.change([&](int&) {
            take = std::move(function);
            finish = std::move(atEnd);
        });
    }
    /// Waits until all sources and sinks are destroyed.
    void awaitEnds()
    {
        live.wait([](int count) { return count == 0; });
    }

    void send(Controller* call, const Part* request, Part* response, Closure* done) override
    {
        if (answersItself(*call, *request, *response, done))
            return;
        struct Source : End<wirecall::StreamSource>
        {
            using End::End;
            bool next(OutgoingBuffer& data) override { return service.next(*call, request, response, data); }
        };
        wirecall::sendStream(call, std::make_unique<Source>(*this, call, *request, *response));
    }

    void receive(Controller* call, const Part* request, Part* response, Closure* done) override
    {
        if (answersItself(*call, *request, *response, done))
            return;
        struct Sink : End<wirecall::StreamSink>
        {
            using End::End;
            bool take(const Payload& data) override { return service.take(*call, request, data, response); }
            void finish() override { service.finish(response); }
        };
        wirecall::receiveStream(call, std::make_unique<Sink>(*this, call, *request, *response));
    }

private:
    /// A source or a sink, counted while it lives.
    template <class Base>
    struct End : Base
    {
        End(StreamService& streams, Controller* controller, const Part& asked, Part& answered)
            : service(streams), call(controller), request(asked), response(answered)
        {
            service.live.change([](int& count) { ++count; });
        }
        ~End() override
        {
            service.live.change([](int& count) { --count; });
        }

        StreamService& service;
        Controller* const call;
        const Part& request;
        Part& response;
    };

    Next next;
    Take take;
    Finish finish;
    Awaited<int> live; ///< sources and sinks; guards the functions

    static bool answersItself(Controller& call, const Part& request, Part& response, Closure* done)
    {
        if (request.note() == "stall") {
            call.NotifyOnCancel(NewCallback(&answer, done, &call));
            return true;
        }
        if (request.note() != "ordinary")
            return false;
        response.set_data("the data");
        response.set_after("after");
        done->Run();
        return true;
    }
};

const google::protobuf::MethodDescriptor& method(const std::string& name)
{
    return *streamtest::Streams::descriptor()->FindMethodByName(name);
}

class Streams : public ::testing::Test
{
protected:
    StreamService service;
    TestServer server{service};
    boost::shared_ptr<wirecall::RpcChannel> channel = channelTo(server.address());
    RpcController controller;
    Part head;
    Payload data;

    /// The outcome as "failure text".
    std::string outcome() const
    {
        return std::to_string(static_cast<int>(controller.failure())) + " " + controller.ErrorText();
    }
};

constexpr std::size_t kSizes[] = {0, 1, 23, 24, 5000, kMiB - 1, kMiB, 70000, 0, 3 * kMiB / 4};

} // namespace

TEST_F(Streams, AStreamOfAnswersArrivesInOrderAndWhole)
{
    service.onSend([sent = 0U](auto&, const Part& request, Part& part, OutgoingBuffer& buffer) mutable {
        EXPECT_FALSE(part.has_number() || part.has_note()) << "the head is cleared";
        if (sent == std::size(kSizes))
            return false;
        part.set_number(sent);
        if (sent % 2 == 0)
            part.set_note(request.note());
        buffer = bufferOf(content(kSizes[sent], sent));
        ++sent;
        return true;
    });
    Part request;
    request.set_note("asked");
    StreamReader reader(*channel, method("send"), controller, request);
    for (std::size_t i = 0; i < std::size(kSizes); ++i) {
        ASSERT_TRUE(reader.read(head, data)) << outcome();
        Payload moved(std::move(data));
        EXPECT_EQ(head.number(), i);
        EXPECT_EQ(head.note(), i % 2 == 0 ? "asked" : "");
        EXPECT_FALSE(head.has_data());
        EXPECT_EQ(textOf(moved), content(kSizes[i], i));
        data = std::move(moved);
    }
    EXPECT_FALSE(reader.read(head, data));
    EXPECT_FALSE(reader.read(head, data));
    EXPECT_EQ(outcome(), "0 ");
    service.awaitEnds();
}

TEST_F(Streams, AStreamOfRequestsIsTakenInOrderAndAnswered)
{
    std::size_t taken = 0;
    service.onReceive(
        [&](auto&, const Part& part, const Payload& payload, Part&) {
            EXPECT_EQ(part.number(), taken);
            EXPECT_EQ(part.has_note(), taken % 2 == 0);
            EXPECT_EQ(textOf(payload), content(kSizes[taken], taken));
            ++taken;
            return true;
        },
        [&](Part& response) { response.set_number(taken); });
    StreamWriter writer(*channel, method("receive"), controller);
    for (std::size_t i = 0; i < std::size(kSizes); ++i) {
        head.Clear();
        head.set_number(i);
        if (i % 2 == 0)
            head.set_note("note");
        ASSERT_TRUE(writer.write(head, bufferOf(content(kSizes[i], i))));
    }
    EXPECT_TRUE(writer.finish(head)) << outcome();
    EXPECT_EQ(head.ShortDebugString(), "number: " + std::to_string(std::size(kSizes)));
    EXPECT_EQ(outcome(), "0 ");
    EXPECT_TRUE(controller.IsRequestSent());
    service.awaitEnds();
}

TEST_F(Streams, DataThatIsNotTheLastFieldIsRead)
{
    head.set_note("ordinary");
    StreamReader reader(*channel, method("send"), controller, head);
    ASSERT_TRUE(reader.read(head, data)) << outcome();
    EXPECT_EQ(head.ShortDebugString(), "after: \"after\"");
    EXPECT_EQ(textOf(data), "the data");
    EXPECT_FALSE(reader.read(head, data));
    EXPECT_EQ(outcome(), "0 ");
    service.onReceive(
        [](auto&, const Part& part, const Payload& payload, Part& response) {
            response.set_note(part.after() + " " + textOf(payload));
            return false;
        },
        {});
    head.set_data("the data");
    StreamWriter writer(*channel, method("receive"), controller);
    writer.write(head, OutgoingBuffer());
    EXPECT_TRUE(writer.finish(head)) << outcome();
    EXPECT_EQ(head.note(), "after the data");
}

TEST_F(Streams, ManyRunAtOnceOnAFewThreads)
{
    constexpr int kStreams = 20;
    service.onReceive(
        [](auto&, const Part& part, const Payload& payload, Part& response) {
            response.set_number(response.number() + part.number() + payload.size());
            return true;
        },
        [](Part&) {});
    // All begin before the first ends.
    std::vector<RpcController> controllers(kStreams);
    std::vector<std::unique_ptr<StreamWriter>> writers;
    for (RpcController& each : controllers)
        writers.push_back(std::make_unique<StreamWriter>(*channel, method("receive"), each));
    for (int round = 0; round < 3; ++round)
        for (const auto& writer : writers) {
            head.set_number(1);
            EXPECT_TRUE(writer->write(head, OutgoingBuffer(70000)));
        }
    for (const auto& writer : writers) {
        Part response;
        EXPECT_TRUE(writer->finish(response));
        EXPECT_EQ(response.number(), 3U * 70001);
    }
}

TEST_F(Streams, AnEarlyAnswerEndsTheWriting)
{
    service.onReceive(
        [](auto&, const Part&, const Payload&, Part& response) {
            response.set_note("enough");
            return false;
        },
        {});
    StreamWriter writer(*channel, method("receive"), controller);
    while (writer.write(Part(), OutgoingBuffer(kMiB))) {
    }
    EXPECT_TRUE(writer.finish(head)) << outcome();
    EXPECT_EQ(head.note(), "enough");
}

TEST_F(Streams, AFailureHasTheServersReason)
{
    using Controller = StreamService::Controller;
    const std::function<bool(Controller&)> failures[] = {
        [](Controller& call) {
            call.SetFailed("not today");
            return false;
        },
        [](Controller&) -> bool { throw std::runtime_error("not today"); },
    };
    for (const auto& failure : failures) {
        service.onSend([&, sent = false](Controller& call, auto&, auto&, auto&) mutable {
            return std::exchange(sent, true) ? failure(call) : true;
        });
        StreamReader reader(*channel, method("send"), controller, head);
        EXPECT_TRUE(reader.read(head, data)) << outcome();
        EXPECT_FALSE(reader.read(head, data));
        EXPECT_EQ(outcome(), "5 not today");
        service.awaitEnds();
        service.onReceive([&](Controller& call, auto&, auto&, auto&) { return failure(call); }, {});
        StreamWriter writer(*channel, method("receive"), controller);
        writer.write(head, OutgoingBuffer());
        EXPECT_FALSE(writer.finish(head));
        EXPECT_EQ(outcome(), "5 not today");
        EXPECT_FALSE(writer.write(head, OutgoingBuffer()));
        service.awaitEnds();
    }
    StreamReader both(*channel, method("both"), controller, head);
    EXPECT_FALSE(both.read(head, data));
    EXPECT_EQ(controller.failure(), Failure::NotImplemented);
}

TEST_F(Streams, WhoeverLeavesEndsTheStreamOnTheOtherSide)
{
    service.onSend([](auto&, auto&, auto&, OutgoingBuffer& buffer) {
        buffer = OutgoingBuffer(kMiB);
        return true;
    });
    {
        StreamReader reader(*channel, method("send"), controller, head);
        EXPECT_TRUE(reader.read(head, data));
        reader.cancel();
        while (reader.read(head, data)) {
        }
        EXPECT_EQ(controller.failure(), Failure::Other);
    }
    service.awaitEnds();
    for (const bool cancelled : {true, false}) {
        std::promise<void> taken;
        service.onReceive(
            [&](auto&, auto&, auto&, auto&) {
                taken.set_value();
                return true;
            },
            [](auto&) { ADD_FAILURE() << "the stream was not whole"; });
        StreamWriter writer(*channel, method("receive"), controller);
        EXPECT_TRUE(writer.write(head, OutgoingBuffer()));
        taken.get_future().wait();
        if (cancelled)
            writer.cancel();
        else
            server.stop(0);
        service.awaitEnds();
        EXPECT_FALSE(writer.finish(head));
        EXPECT_TRUE(controller.IsRequestSent());
    }
}

TEST_F(Streams, AStallEndsACallAndBytesThatTrickleInAreNone)
{
    controller.SetStallLimit(200);
    Part request;
    request.set_note("stall");
    {
        StreamReader reader(*channel, method("send"), controller, request);
        EXPECT_FALSE(reader.read(head, data));
        EXPECT_EQ(outcome(), "2 nothing moved for 200 ms");
        StreamWriter writer(*channel, method("receive"), controller);
        EXPECT_TRUE(writer.write(request, OutgoingBuffer()));
        EXPECT_FALSE(writer.finish(head));
        EXPECT_EQ(outcome(), "2 nothing moved for 200 ms");
        streamtest::Streams::Stub(channel.get()).receive(&controller, &request, &head, nullptr);
        EXPECT_EQ(outcome(), "2 nothing moved for 200 ms");
    }
    const int port = std::stoi(server.address().substr(server.address().rfind(':') + 1));
    CuttingProxy proxy(port, std::numeric_limits<std::uint64_t>::max(), std::chrono::milliseconds(30));
    const auto slow = channelTo("127.0.0.1:" + std::to_string(proxy.port()));
    controller.SetStallLimit(1000); // a MiB takes 2 s
    service.onSend([sent = false](auto&, auto&, auto&, OutgoingBuffer& buffer) mutable {
        buffer = OutgoingBuffer(kMiB);
        return !std::exchange(sent, true);
    });
    StreamReader reader(*slow, method("send"), controller, head);
    EXPECT_TRUE(reader.read(head, data)) << outcome();
    EXPECT_EQ(data.size(), kMiB);
    EXPECT_FALSE(reader.read(head, data));
    service.onReceive([](auto&, auto&, auto&, auto&) { return true; }, [](auto&) {});
    StreamWriter writer(*slow, method("receive"), controller);
    EXPECT_TRUE(writer.write(head, OutgoingBuffer(kMiB)));
    EXPECT_TRUE(writer.finish(head)) << outcome();
}

TEST_F(Streams, ACallerThatStopsSendingOrTakingIsCancelledAndOneThatSendsNothingRefused)
{
    Awaited<std::vector<std::string>> outcomes;
    wirecall::RpcServer::Options options;
    options.address = "127.0.0.1:0";
    options.streamLimit = std::chrono::milliseconds(50);
    options.observe = [&](const wirecall::ServerCall&, const wirecall::CallReport& report) {
        outcomes.change([&](auto& all) { all.emplace_back(report.outcome); });
    };
    wirecall::RpcServer impatient;
    std::string error;
    impatient.add(&service);
    ASSERT_TRUE(impatient.start(options, error)) << error;
    const auto there = channelTo("127.0.0.1:" + std::to_string(impatient.port()));
    service.onSend([](auto&, auto&, auto&, OutgoingBuffer& buffer) {
        buffer = OutgoingBuffer(kMiB);
        return true;
    });
    service.onReceive([](auto&, auto&, auto&, auto&) { return true; },
                      [](auto&) { ADD_FAILURE() << "the stream was not whole"; });
    StreamReader reader(*there, method("send"), controller, head);
    EXPECT_TRUE(reader.read(head, data)) << outcome();
    RpcController other, third;
    StreamWriter writer(*there, method("receive"), other);
    EXPECT_TRUE(writer.write(Part(), OutgoingBuffer(1)));
    outcomes.wait([](const auto& all) { return all.size() == 2; });
    service.awaitEnds();
    StreamWriter empty(*there, method("receive"), third);
    EXPECT_FALSE(empty.finish(head));
    EXPECT_EQ(third.ErrorText(), "the call ended without a message");
    const std::vector<std::string> expected = {"CANCELLED", "CANCELLED", "INVALID_ARGUMENT"};
    outcomes.wait([&](const auto& all) { return all == expected; });
}

TEST_F(Streams, WhatCanNotStreamSaysSo)
{
    struct OtherChannel : wirecall::RpcChannel
    {
        void CallMethod(const google::protobuf::MethodDescriptor*, google::protobuf::RpcController*,
                        const google::protobuf::Message*, google::protobuf::Message*, Closure*) override
        {
        }
    } other;
    StreamReader reader(other, method("send"), controller, head);
    EXPECT_FALSE(reader.read(head, data));
    EXPECT_EQ(outcome(), "4 the channel can't carry streams");
    controller.Reset();
    StreamWriter writer(other, method("receive"), controller);
    EXPECT_FALSE(writer.write(head, OutgoingBuffer()));
    EXPECT_FALSE(writer.finish(head));
    EXPECT_EQ(outcome(), "4 the channel can't carry streams");
    EXPECT_FALSE(controller.IsRequestSent());
    EXPECT_THROW(OutgoingBuffer(kMiB + 1), std::length_error);
    EXPECT_THROW(wirecall::sendStream(&controller, nullptr), std::logic_error);
    EXPECT_THROW(wirecall::receiveStream(&controller, nullptr), std::logic_error);
}
