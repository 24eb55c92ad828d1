#include "tests/hostile/HostileServer.h"

#include <grpcpp/client_context.h>
#include <grpcpp/create_channel.h>
#include <grpcpp/generic/generic_stub.h>
#include <grpcpp/security/credentials.h>
#include <grpcpp/security/server_credentials.h>
#include <grpcpp/server_builder.h>
#include <grpcpp/support/server_callback.h>

#include <chrono>
#include <future>
#include <list>

namespace {

constexpr std::size_t kMiB = std::size_t(1) << 20;
constexpr std::size_t kPiece = 4096; // messages

std::string varint(std::size_t value)
{
    std::string bytes;
    for (; value > 0x7F; value >>= 7)
        bytes += static_cast<char>((value & 0x7F) | 0x80);
    return bytes + static_cast<char>(value);
}

std::string contentOf(const grpc::ByteBuffer& buffer)
{
    std::vector<grpc::Slice> slices;
    std::string content;
    if (buffer.Valid() && buffer.Dump(&slices).ok())
        for (const grpc::Slice& slice : slices)
            content.append(reinterpret_cast<const char*>(slice.begin()), slice.size());
    return content;
}

/// One call: reads the request, sends the answer.
class Call final : public grpc::ServerGenericBidiReactor
{
public:
    Call(grpc::GenericCallbackServerContext& context, const HostileServer::Answers& answers)
        : m_Context(context), m_Answers(answers)
    {
        StartRead(&m_Request);
    }

private:
    void OnReadDone(bool ok) override
    {
        if (!ok)
            return Finish(grpc::Status(grpc::StatusCode::INTERNAL, "no request"));
        const std::string& path = m_Context.method();
        m_Answer = m_Answers(path.substr(path.rfind('/') + 1), contentOf(m_Request));
        if (m_Answer.gzip)
            m_Context.set_compression_algorithm(GRPC_COMPRESS_GZIP);
        StartWriteAndFinish(&m_Answer.message, grpc::WriteOptions(), grpc::Status::OK);
    }

    void OnDone() override { delete this; }

    grpc::GenericCallbackServerContext& m_Context;
    const HostileServer::Answers& m_Answers;
    grpc::ByteBuffer m_Request;
    HostileServer::Answer m_Answer;
};

} // namespace

grpc::ByteBuffer repeated(const std::string& piece, std::size_t times)
{
    const std::vector<grpc::Slice> slices(times, grpc::Slice(piece)); // shared
    return grpc::ByteBuffer(slices.data(), slices.size());
}

grpc::ByteBuffer emptyMessages(int field, std::size_t count)
{
    std::string many;
    for (std::size_t i = 0; i < kPiece; ++i)
        many += varint(field << 3 | 2) + '\0';
    return repeated(many, count / kPiece);
}

grpc::ByteBuffer zeros(int field, std::size_t mebibytes)
{
    std::vector<grpc::Slice> slices(mebibytes + 1, grpc::Slice(std::string(kMiB, '\0')));
    slices.front() = grpc::Slice(varint(field << 3 | 2) + varint(mebibytes * kMiB));
    return grpc::ByteBuffer(slices.data(), slices.size());
}

std::vector<grpc::Status> callAtOnce(const std::string& address, const std::string& token,
                                     const std::string& method, int calls, const grpc::ByteBuffer& request,
                                     bool gzip)
{
    struct Outgoing
    {
        grpc::ClientContext context;
        grpc::ByteBuffer answer;
        std::promise<grpc::Status> status;
    };
    grpc::GenericStub stub(grpc::CreateChannel(address, grpc::InsecureChannelCredentials()));
    std::list<Outgoing> all(static_cast<std::size_t>(calls));
    for (Outgoing& call : all) {
        call.context.AddMetadata("authorization", "Bearer " + token);
        if (gzip)
            call.context.set_compression_algorithm(GRPC_COMPRESS_GZIP);
        stub.UnaryCall(&call.context, method, {}, &request, &call.answer,
                       [&call](const grpc::Status& status) { call.status.set_value(status); });
    }
    std::vector<grpc::Status> outcomes;
    for (Outgoing& call : all)
        outcomes.push_back(call.status.get_future().get());
    return outcomes;
}

grpc::ServerGenericBidiReactor*
HostileServer::Service::CreateReactor(grpc::GenericCallbackServerContext* context)
{
    return new Call(*context, m_Answers);
}

HostileServer::HostileServer(Answers answers) : m_Service(std::move(answers))
{
    grpc::ServerBuilder builder;
    builder.AddListeningPort("127.0.0.1:0", grpc::InsecureServerCredentials(), &m_Port);
    builder.SetMaxReceiveMessageSize(-1);
    builder.RegisterCallbackGenericService(&m_Service);
    m_Server = builder.BuildAndStart();
}

HostileServer::~HostileServer()
{
    m_Server->Shutdown(std::chrono::system_clock::now());
}
