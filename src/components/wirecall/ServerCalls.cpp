#include "components/wirecall/ServerCalls.h"

#include "components/wirecall/BoundedMessage.h"
#include "components/wirecall/HandOver.h"
#include "components/wirecall/MemberEvent.h"
#include "components/wirecall/Reason.h"
#include "components/wirecall/ServerStreams.h"
#include "components/wirecall/StatusName.h"
#include "components/wirecall/StreamMessages.h"
#include "components/wirecall/StreamWatch.h"
#include "components/wirecall/Token.h"
#include "components/wirecall/WireLimits.h"

#include <google/protobuf/descriptor.h>
#include <grpcpp/impl/codegen/proto_utils.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace wirecall {

using google::protobuf::Closure;
using google::protobuf::Message;

namespace {

constexpr std::size_t kLongestFailureText = 4096; // it is sent in a header

} // namespace

/// One call from its arrival to its end. It lives until all of its events have come: at least, that its
/// answer was sent, and that gRPC has finished with it (which comes at once for a cancelled call).
class ServerCalls::Call final : public ServerCall, public StreamCall, private Closure
{
public:
    Call(ServerCalls& calls, grpc::AsyncGenericService& generic, grpc::ServerCompletionQueue& queue)
        : m_Calls(calls),
          m_Generic(generic),
          m_Queue(queue),
          m_Stream(&m_Context),
          m_IsCounted(calls.m_UserCalls, m_User),
          m_Memory(calls.m_Memory, m_User),
          m_Arrived(*this, &Call::arrived),
          m_Received(*this, &Call::received, &Call::isRunLong),
          m_StepEnded(*this, &Call::stepEnded, &Call::isStepLong),
          m_Answered(*this, &Call::answered),
          m_Looked(*this, &Call::looked),
          m_Done(*this, &Call::done)
    {
        m_Context.AsyncNotifyWhenDone(&m_Done);
        handOver(&m_Queue);
        generic.RequestCall(&m_Context, &m_Stream, &queue, &queue, &m_Arrived);
    }

    const std::string& method() const override
    {
        static const std::string none;
        return m_Method != nullptr ? m_Method->descriptor->full_name() : none;
    }

    const std::string& token() const override { return m_Token; }
    const std::string& user() const override { return m_User; }
    const std::string& group() const override { return m_Group; }
    void setUser(std::string user, std::string group) override
    {
        m_User = std::move(user);
        m_Group = std::move(group);
    }
    std::string peer() const override { return m_Peer.empty() ? m_Context.peer() : m_Peer; }

    void SetFailed(const std::string& reason) override
    {
        m_Failed = true;
        m_FailureText = reason.substr(0, kLongestFailureText);
    }

    void setNotFound(const std::string& reason) override
    {
        SetFailed(reason);
        m_FailureCode = grpc::StatusCode::NOT_FOUND;
    }

    void setExhausted(const std::string& reason) override
    {
        SetFailed(reason);
        m_FailureCode = grpc::StatusCode::RESOURCE_EXHAUSTED;
    }

    void setReason(const std::string& reason) override { m_Reason = shortReason(reason); }

    bool IsCanceled() const override { return m_Cancelled; }

    void NotifyOnCancel(Closure* callback) override
    {
        {
            const std::lock_guard<std::mutex> lock(m_CancelMutex);
            if (!m_Ended) {
                m_OnCancel = callback;
                return;
            }
        }
        callback->Run();
    }

    void give(std::unique_ptr<StreamSource> source) override
    {
        requireStream(m_Method->descriptor->server_streaming());
        m_Messages = std::make_unique<OutgoingStream>(*this, std::move(source), *m_Response);
        watch();
    }

    void give(std::unique_ptr<StreamSink> sink) override
    {
        requireStream(m_Method->descriptor->client_streaming());
        m_Messages = std::make_unique<IncomingStream>(*this, std::move(sink), *m_Request, m_Buffer);
        m_Buffer.Clear();
        watch();
    }

    void send(const grpc::ByteBuffer& message) override
    {
        m_Report.bytesSent += message.Length();
        judge();
        beginStep();
        m_Stream.Write(message, &m_StepEnded);
    }

    void receive(grpc::ByteBuffer& message) override
    {
        m_ArrivingMessage = &message;
        beginStep();
        m_Stream.Read(&message, &m_StepEnded);
    }

    void confirm() override
    {
        beginStep();
        m_Stream.SendInitialMetadata(&m_StepEnded);
    }

    void setFailed(const std::string& reason) override { SetFailed(reason); }

    void wake() override
    {
        if (m_Messages)
            m_Messages->work();
    }

    void end(bool withAnswer) override
    {
        if (withAnswer || m_Failed)
            Run();
        else
            conclude(grpc::Status::OK);
    }

    std::size_t lane() const { return m_Lane; }

    // The members of a controller that only a caller uses.
    void Reset() override {}
    bool Failed() const override { return m_Failed; }
    std::string ErrorText() const override { return m_FailureText; }
    void StartCancel() override {}

private:
    void arrived(bool ok)
    {
        if (!ok) { // the server stops; no other event comes
            delete this;
            return;
        }
        m_Arrival = std::chrono::steady_clock::now();
        if (m_Calls.m_Observe)
            m_Peer = m_Context.peer(); // a cancelled call has none in the end
        m_Token = tokenOf(m_Context.client_metadata());
        m_Calls.m_Running.began();
        m_Calls.takeNext(m_Generic, m_Queue);
        const auto found = m_Calls.m_Methods.find(m_Context.method());
        if (found == m_Calls.m_Methods.end()) {
            refuse(grpc::StatusCode::UNIMPLEMENTED, "no such method: " + m_Context.method());
            return;
        }
        m_Method = &found->second;
        // Before the request is read, so that a caller without a token can't make the server read 256 MiB.
        std::string reason;
        if (!isAuthentic(reason)) {
            refuse(grpc::StatusCode::UNAUTHENTICATED, reason);
            return;
        }
        if (!countForUser()) {
            refuse(grpc::StatusCode::RESOURCE_EXHAUSTED, "this user has " +
                                                             std::to_string(m_Calls.m_CallsOfUser) +
                                                             " calls under way already; try again later");
            return;
        }
        ++m_Calls.m_Arriving;
        expect();
        m_Stream.Read(&m_Buffer, &m_Received);
    }

    bool isStepLong() const { return m_Method->takesLong() && !m_Messages->isAtWork(); }
    bool isRunLong() const
    {
        return m_Calls.m_Arriving > 1 ? m_Method->takesLongForOthers() : m_Method->takesLong();
    }

    void received(bool ok)
    {
        --m_Calls.m_Arriving;
        m_Report.bytesReceived += m_Buffer.Length();
        try {
            if (ok)
                runMethod();
            else
                refuse(grpc::StatusCode::INVALID_ARGUMENT, "the call ended without a message");
        } catch (const std::exception& exception) {
            refuse(grpc::StatusCode::INTERNAL, exception.what());
        }
        release();
    }

    bool isAuthentic(std::string& reason)
    {
        try {
            return !m_Calls.m_Authenticate || m_Calls.m_Authenticate(*this, reason);
        } catch (const std::exception& exception) {
            reason = exception.what();
            return false;
        }
    }

    bool countForUser()
    {
        if (m_User.empty())
            m_User = m_Token;
        m_Lane = std::hash<std::string>()(m_User) | 1;
        return m_Calls.m_CallsOfUser == 0 || m_IsCounted.take(1, m_Calls.m_CallsOfUser);
    }

    void runMethod()
    {
        m_Request.reset(m_Method->service->GetRequestPrototype(m_Method->descriptor).New());
        m_Response.reset(m_Method->service->GetResponsePrototype(m_Method->descriptor).New());
        const grpc::Status parsed = parseRequest();
        if (!parsed.ok()) {
            conclude(parsed);
            return;
        }
        const bool isStream = m_Method->isStream();
        if (isStream && !hold(kOfStream)) {
            conclude(heldTooMuch());
            return;
        }
        const ServerMethod::Timed timed(*m_Method);
        m_Method->service->CallMethod(m_Method->descriptor, this, m_Request.get(), m_Response.get(), this);
        if (m_Messages)
            m_Messages->work();
        else if (!isStream)
            stepPassed();
    }

    grpc::Status parseRequest()
    {
        if (!m_Method->descriptor->client_streaming())
            return parseBounded(m_Buffer, *m_Request, kMostRequestMemory,
                                [this](std::size_t bytes) { return hold(bytes); });
        Payload data; // the stream will take it
        return takeApart(m_Buffer, *m_Request, data) ? grpc::Status::OK : notParsed();
    }

    /// Counts `bytes` for the caller until the call has ended. Returns false if that is too much.
    bool hold(std::size_t bytes) { return bytes < kSmallest || m_Memory.take(bytes, kMostOfUser); }

    /// Called when the method has returned, and when its answer has been serialized.
    void stepPassed()
    {
        if (m_StepsPassed.fetch_add(1) == 0)
            return;
        m_Request.reset();
        m_Response.reset();
    }

    /// Sends the method's answer; called on any thread.
    void Run() override
    {
        if (m_Failed) {
            refuse(m_FailureCode, m_FailureText);
            return;
        }
        judge();
        grpc::ByteBuffer answer;
        bool own = false;
        const grpc::Status status =
            grpc::GenericSerialize<grpc::ProtoBufferWriter, Message>(*m_Response, &answer, &own);
        if (!status.ok()) {
            refuse(status.error_code(), status.error_message());
            return;
        }
        if (!m_Messages)
            stepPassed();
        if (!hold(answer.Length())) {
            conclude(heldTooMuch());
            return;
        }
        if (m_Concluded.exchange(true))
            return;
        m_Watch.stop();
        m_Report.bytesSent += answer.Length();
        if (!m_Reason.empty())
            m_Context.AddTrailingMetadata(kReasonKey, m_Reason);
        handOver(&m_Queue);
        m_Stream.WriteAndFinish(answer, grpc::WriteOptions(), grpc::Status::OK, &m_Answered);
    }

    void refuse(grpc::StatusCode code, const std::string& text) { conclude(grpc::Status(code, text)); }

    void conclude(const grpc::Status& status)
    {
        if (m_Concluded.exchange(true))
            return;
        m_Watch.stop();
        m_Report.outcome = nameOf(status.error_code());
        m_Report.reason = status.error_message();
        handOver(&m_Queue);
        m_Stream.Finish(status, &m_Answered);
    }

    void requireStream(bool declared) const
    {
        if (!declared || m_Messages)
            throw std::logic_error(method() + " can't have this stream");
    }

    /// Another event will come.
    void expect()
    {
        ++m_EventsLeft;
        handOver(&m_Queue);
    }

    /// Another event will come when the caller has sent or taken something.
    void beginStep()
    {
        expect();
        m_Watch.stepBegan();
    }

    /// Looks again when the stream may have stalled.
    void watch()
    {
        expect();
        if (!m_Watch.lookLater(m_Queue, m_Calls.m_StreamLimit, &m_Looked))
            release();
    }

    void looked(bool isTime)
    {
        if (isTime && m_Watch.isStalled(m_Calls.m_StreamLimit))
            m_Context.TryCancel(); // the step fails then, which ends the call
        else if (isTime)
            watch();
        release();
    }

    void stepEnded(bool ok)
    {
        m_Watch.stepEnded();
        if (const grpc::ByteBuffer* message = std::exchange(m_ArrivingMessage, nullptr);
            message != nullptr && ok)
            m_Report.bytesReceived += message->Length();
        {
            std::optional<ServerMethod::Timed> timed;
            if (!m_Messages->isAtWork())
                timed.emplace(*m_Method);
            m_Messages->stepEnded(ok);
        }
        release();
    }

    void answered(bool) { release(); }

    void done(bool)
    {
        Closure* onCancel = nullptr;
        {
            const std::lock_guard<std::mutex> lock(m_CancelMutex);
            m_Ended = true;
            m_Cancelled = m_Context.IsCancelled();
            std::swap(onCancel, m_OnCancel);
        }
        if (onCancel != nullptr)
            onCancel->Run();
        release();
    }

    void release()
    {
        if (--m_EventsLeft > 0)
            return;
        ServerCalls& calls = m_Calls;
        if (calls.m_Observe)
            report();
        delete this;
        calls.m_Running.ended();
    }

    /// Before the response is gone.
    void judge()
    {
        if (m_Calls.m_Judge != nullptr)
            m_Report.result = m_Calls.m_Judge(*m_Response);
    }

    void report()
    {
        if (m_Cancelled && m_Report.outcome == nameOf(grpc::StatusCode::OK))
            m_Report.outcome = nameOf(grpc::StatusCode::CANCELLED);
        m_Report.duration = std::chrono::steady_clock::now() - m_Arrival;
        m_Calls.m_Observe(*this, m_Report);
    }

    ServerCalls& m_Calls;
    grpc::AsyncGenericService& m_Generic;
    grpc::ServerCompletionQueue& m_Queue;
    grpc::GenericServerContext m_Context;
    grpc::GenericServerAsyncReaderWriter m_Stream;
    std::string m_Token;
    std::string m_User;
    std::string m_Group;
    std::string m_Peer;
    HeldShare m_IsCounted; ///< among the calls of its user
    HeldShare m_Memory;
    MemberEvent<Call> m_Arrived, m_Received, m_StepEnded, m_Answered, m_Looked, m_Done;
    std::atomic<int> m_EventsLeft{2}; ///< that it is answered and done, and others that will come

    ServerMethod* m_Method = nullptr;
    std::size_t m_Lane = 0; ///< a number for the user
    grpc::ByteBuffer m_Buffer;
    std::unique_ptr<Message> m_Request;
    std::unique_ptr<Message> m_Response;
    std::atomic<int> m_StepsPassed{0};
    std::unique_ptr<ServerStream> m_Messages; ///< of a method with a stream
    StreamWatch m_Watch;                      ///< of that stream
    bool m_Failed = false;
    std::string m_FailureText;
    std::string m_Reason; ///< sent beside an answer
    grpc::StatusCode m_FailureCode = grpc::StatusCode::UNKNOWN;
    std::atomic<bool> m_Concluded{false}; ///< an answer or a refusal is being sent

    std::chrono::steady_clock::time_point m_Arrival;
    const grpc::ByteBuffer* m_ArrivingMessage = nullptr; ///< the message of a stream that is being received
    CallReport m_Report;

    std::mutex m_CancelMutex;
    Closure* m_OnCancel = nullptr;
    bool m_Ended = false;
    std::atomic<bool> m_Cancelled{false};
};

ServerCalls::ServerCalls(const RpcServer::Options& options)
    : m_Authenticate(options.authenticate),
      m_Observe(options.observe),
      m_Judge(options.judge),
      m_CallsOfUser(static_cast<std::size_t>(std::max(0, options.callsOfUser))),
      m_StreamLimit(options.streamLimit)
{
}

void ServerCalls::add(google::protobuf::Service* service)
{
    const google::protobuf::ServiceDescriptor* descriptor = service->GetDescriptor();
    for (int i = 0; i < descriptor->method_count(); ++i) {
        const google::protobuf::MethodDescriptor* method = descriptor->method(i);
        if (!method->client_streaming() || !method->server_streaming()) // both at once is not supported
        {
            ServerMethod& added = m_Methods["/" + descriptor->full_name() + "/" + method->name()];
            added.service = service;
            added.descriptor = method;
        }
    }
}

void ServerCalls::takeNext(grpc::AsyncGenericService& generic, grpc::ServerCompletionQueue& queue)
{
    new Call(*this, generic, queue);
}

} // namespace wirecall
