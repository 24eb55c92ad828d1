#include "components/wirecall/BoundedMessage.h"
#include "components/wirecall/ClientCall.h"
#include "components/wirecall/GrpcChannel.h"
#include "components/wirecall/StreamMessages.h"
#include "components/wirecall/Streams.h"
#include "components/wirecall/WireLimits.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <grpcpp/impl/codegen/proto_utils.h>
#include <grpcpp/support/async_stream.h>
#include <grpcpp/support/byte_buffer.h>

namespace wirecall {

using google::protobuf::Message;
using google::protobuf::MethodDescriptor;
using grpc::internal::RpcMethod;

namespace {

constexpr char kNotParsed[] = "what arrived can't be parsed";

/// Begins a call, unless the channel is another than openChannel makes.
std::unique_ptr<WaitingCall> begin(RpcChannel& channel, const MethodDescriptor& method,
                                   RpcMethod::RpcType type, RpcController& controller)
{
    if (const auto* grpcChannel = dynamic_cast<const GrpcChannel*>(&channel))
        return std::make_unique<WaitingCall>(grpcChannel->connection(), method, type, controller);
    controller.setOutcome(Failure::NotImplemented, "the channel can't carry streams", false);
    return nullptr;
}

} // namespace

struct StreamReader::Impl
{
    explicit Impl(RpcController& c) : controller(c) {}

    RpcController& controller;
    std::unique_ptr<WaitingCall> call; ///< null if it did not begin
    std::unique_ptr<grpc::ClientAsyncReader<grpc::ByteBuffer>> stream;
    bool ended = false;

    bool receive(grpc::ByteBuffer& message)
    {
        bool ok = false;
        stream->Read(&message, nullptr);
        call->wait(ok);
        return ok;
    }

    void end()
    {
        grpc::Status status;
        bool ok = false;
        stream->Finish(&status, nullptr);
        call->wait(ok);
        call->conclude(status);
        ended = true;
    }
};

StreamReader::StreamReader(RpcChannel& channel, const MethodDescriptor& method, RpcController& controller,
                           const Message& request)
    : m_Impl(std::make_unique<Impl>(controller))
{
    if (refuseTooLarge(request, controller))
        return;
    m_Impl->call = begin(channel, method, RpcMethod::SERVER_STREAMING, controller);
    if (!m_Impl->call)
        return;
    WaitingCall& call = *m_Impl->call;
    m_Impl->stream.reset(grpc::internal::ClientAsyncReaderFactory<grpc::ByteBuffer>::Create<Message>(
        &call.channel(), &call.queue(), call.method(), &call.context(), request, true, nullptr));
    bool ok = false;
    call.wait(ok); // a failure shows in the first read
}

StreamReader::~StreamReader() = default;

bool StreamReader::read(Message& head, Payload& payload)
{
    if (!m_Impl->call || m_Impl->ended)
        return false;
    grpc::ByteBuffer message;
    if (!m_Impl->receive(message)) {
        m_Impl->end();
        return false;
    }
    if (takeApart(message, head, payload))
        return true;
    cancel();
    m_Impl->end();
    m_Impl->controller.setOutcome(Failure::Other, kNotParsed, true);
    return false;
}

void StreamReader::cancel()
{
    if (m_Impl->call)
        m_Impl->call->cancel();
}

struct StreamWriter::Impl
{
    explicit Impl(RpcController& c) : controller(c) {}
    ~Impl()
    {
        if (call)
            call->end();
    }

    RpcController& controller;
    std::unique_ptr<WaitingCall> call; ///< null if it did not begin
    std::unique_ptr<grpc::ClientAsyncWriter<grpc::ByteBuffer>> stream;
    grpc::ByteBuffer answer;
    grpc::Status status;
    bool sending = false;
    bool broken = false; ///< something could not be sent, so the status will come
    bool ended = false;  ///< the status has come

    /// Waits for the next event.
    void wait()
    {
        bool ok = false;
        if (call->wait(ok) == &status) {
            ended = true;
        } else {
            sending = false;
            broken = broken || !ok;
        }
    }

    /// Waits until the next message can be sent. Returns false when none can any more.
    bool isReady()
    {
        while (sending && !ended)
            wait();
        return !ended && !broken;
    }
};

StreamWriter::StreamWriter(RpcChannel& channel, const MethodDescriptor& method, RpcController& controller)
    : m_Impl(std::make_unique<Impl>(controller))
{
    m_Impl->call = begin(channel, method, RpcMethod::CLIENT_STREAMING, controller);
    if (!m_Impl->call)
        return;
    WaitingCall& call = *m_Impl->call;
    m_Impl->sending = true;
    m_Impl->stream.reset(grpc::internal::ClientAsyncWriterFactory<grpc::ByteBuffer>::Create(
        &call.channel(), &call.queue(), call.method(), &call.context(), &m_Impl->answer, true, nullptr));
    // From the beginning, so that an early answer is seen at once.
    m_Impl->stream->Finish(&m_Impl->status, &m_Impl->status);
}

StreamWriter::~StreamWriter() = default;

bool StreamWriter::write(const Message& head, OutgoingBuffer data)
{
    if (!m_Impl->call || !m_Impl->isReady())
        return false;
    m_Impl->sending = true;
    m_Impl->stream->Write(assemble(head, std::move(data)), nullptr);
    return true;
}

bool StreamWriter::finish(Message& response)
{
    if (!m_Impl->call)
        return false;
    if (m_Impl->isReady()) {
        m_Impl->sending = true;
        m_Impl->stream->WritesDone(nullptr);
    }
    while (!m_Impl->ended)
        m_Impl->wait();
    m_Impl->call->conclude(m_Impl->status);
    if (m_Impl->controller.Failed())
        return false;
    const grpc::Status parsed = parseBounded(m_Impl->answer, response, kMostAnswerMemory);
    if (!parsed.ok())
        m_Impl->controller.setOutcome(Failure::Other, parsed.error_message(), true);
    return parsed.ok();
}

void StreamWriter::cancel()
{
    if (m_Impl->call)
        m_Impl->call->cancel();
}

} // namespace wirecall
