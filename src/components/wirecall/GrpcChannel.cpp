#include "components/wirecall/Address.h"
#include "components/wirecall/HandOver.h"
#include "components/wirecall/PemFile.h"
#include "components/wirecall/Token.h"
#include "components/wirecall/WireLimits.h"
#include "lumo/components/wirecall/RpcChannel.h"
#include "lumo/components/wirecall/RpcController.h"

#include <boost/make_shared.hpp>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <grpcpp/alarm.h>
#include <grpcpp/channel.h>
#include <grpcpp/client_context.h>
#include <grpcpp/create_channel.h>
#include <grpcpp/impl/client_unary_call.h>
#include <grpcpp/impl/codegen/proto_utils.h>
#include <grpcpp/security/credentials.h>
#include <grpcpp/support/channel_arguments.h>
#include <grpcpp/support/client_callback.h>
#include <openssl/ssl.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>

namespace wirecall {

namespace {

using google::protobuf::Closure;
using google::protobuf::Message;
using google::protobuf::MethodDescriptor;

/// A call without a time limit ends this long after the other side stopped answering, in milliseconds.
constexpr int kKeepaliveTime = 20000;
constexpr int kKeepaliveTimeout = 10000;
constexpr long long kLongestTimeLimit = 1000LL * 60 * 60 * 24 * 365;

Failure failureOf(grpc::StatusCode code)
{
    switch (code) {
    case grpc::StatusCode::OK:
        return Failure::None;
    case grpc::StatusCode::UNAVAILABLE:
        return Failure::NoConnection;
    case grpc::StatusCode::DEADLINE_EXCEEDED:
        return Failure::TimeLimit;
    case grpc::StatusCode::UNAUTHENTICATED:
        return Failure::Unauthenticated;
    case grpc::StatusCode::UNIMPLEMENTED:
        return Failure::NotImplemented;
    default:
        return Failure::Other;
    }
}

std::string methodPath(const MethodDescriptor* method)
{
    const std::string& service = method->service()->full_name();
    const std::string& name = method->name();
    std::string path;
    path.reserve(service.size() + name.size() + 2);
    path.append("/").append(service).append("/").append(name);
    return path;
}

/// The first channel that made a call with a closure.
std::atomic<std::shared_ptr<grpc::Channel>*> keptForItsThreads{nullptr};

class GrpcChannel final : public RpcChannel
{
public:
    GrpcChannel(std::shared_ptr<grpc::Channel> channel, const std::string& target, const std::string& token)
        : m_Channel(std::move(channel)),
          m_Target(target),
          m_Authorization(token.empty() ? token : "Bearer " + token)
    {
    }

    void CallMethod(const MethodDescriptor* method, google::protobuf::RpcController* controller,
                    const Message* request, Message* response, Closure* done) override
    {
        RpcController& call = *static_cast<RpcController*>(controller);
        // gRPC would end the process for a request of more than 2 GiB.
        if (request->ByteSizeLong() > kLargestMessage)
            refuse(call, request->ByteSizeLong(), done);
        else if (done == nullptr)
            callAndWait(method, call, *request, *response);
        else
            callAndReturn(method, call, *request, *response, *done);
    }

private:
    void callAndWait(const MethodDescriptor* method, RpcController& controller, const Message& request,
                     Message& response)
    {
        grpc::ClientContext context;
        prepare(context, controller);
        const bool connected = isConnected(*m_Channel);
        const std::string path = methodPath(method);
        const grpc::internal::RpcMethod unary(path.c_str(), grpc::internal::RpcMethod::NORMAL_RPC);
        const grpc::Status status =
            grpc::internal::BlockingUnaryCall(m_Channel.get(), unary, &context, request, &response);
        conclude(controller, status, connected || reached(context, *m_Channel, m_Target));
    }

    void callAndReturn(const MethodDescriptor* method, RpcController& controller, const Message& request,
                       Message& response, Closure& done)
    {
        struct Call
        {
            grpc::ClientContext context;
            std::string path;
            std::string target;
            std::shared_ptr<grpc::Channel> channel;
            bool connected;
        };
        Call* call = new Call;
        call->path = methodPath(method);
        call->target = m_Target;
        call->channel = m_Channel;
        call->connected = isConnected(*m_Channel);
        prepare(call->context, controller);
        const grpc::internal::RpcMethod unary(call->path.c_str(), grpc::internal::RpcMethod::NORMAL_RPC);
        // gRPC ends its callback threads when the last channel that used them ends, which may happen on one
        // of them. The first such channel is kept for ever, so that there is no last one.
        static std::once_flag once;
        std::call_once(once, [this] { keptForItsThreads = new std::shared_ptr<grpc::Channel>(m_Channel); });
        handOver(call);
        grpc::internal::CallbackUnaryCall(
            m_Channel.get(), unary, &call->context, &request, &response,
            [call, &controller, &done](const grpc::Status& status) {
                takeOver(call);
                conclude(controller, status,
                         call->connected || reached(call->context, *call->channel, call->target));
                delete call;
                done.Run();
            });
    }

    /// Fails a request that is too large. The closure runs on a thread of gRPC, as for any other call.
    static void refuse(RpcController& controller, std::size_t size, Closure* done)
    {
        controller.setOutcome(Failure::Other,
                              "the request has " + std::to_string(size) + " bytes, more than the " +
                                  std::to_string(kLargestMessage) + " that a message may have",
                              false);
        if (done == nullptr)
            return;
        auto* alarm = new grpc::Alarm;
        handOver(alarm);
        alarm->Set(std::chrono::system_clock::now(), [alarm, done](bool) {
            takeOver(alarm);
            delete alarm;
            done->Run();
        });
    }

    void prepare(grpc::ClientContext& context, const RpcController& controller) const
    {
        if (controller.timeout() > 0)
            context.set_deadline(
                std::chrono::system_clock::now() +
                std::chrono::milliseconds(std::min(controller.timeout(), kLongestTimeLimit)));
        if (!m_Authorization.empty())
            context.AddMetadata("authorization", m_Authorization);
    }

    static bool isConnected(grpc::Channel& channel) { return channel.GetState(false) == GRPC_CHANNEL_READY; }

    /// Whether a call that began without a connection got one. Until then gRPC names the target as the call's
    /// peer.
    static bool reached(const grpc::ClientContext& context, grpc::Channel& channel, const std::string& target)
    {
        return context.peer() != target || isConnected(channel);
    }

    static void conclude(RpcController& controller, const grpc::Status& status, bool requestSent)
    {
        if (status.ok()) {
            controller.setOutcome(Failure::None, std::string(), true);
            return;
        }
        const std::string& text = status.error_message();
        controller.setOutcome(failureOf(status.error_code()), text.empty() ? "unknown failure" : text,
                              requestSent);
    }

    const std::shared_ptr<grpc::Channel> m_Channel;
    const std::string m_Target;
    const std::string m_Authorization;
};

grpc::ChannelArguments channelArguments()
{
    grpc::ChannelArguments arguments;
    arguments.SetMaxReceiveMessageSize(kLargestMessage);
    arguments.SetMaxSendMessageSize(kLargestMessage);
    arguments.SetInt(GRPC_ARG_KEEPALIVE_TIME_MS, kKeepaliveTime);
    arguments.SetInt(GRPC_ARG_KEEPALIVE_TIMEOUT_MS, kKeepaliveTimeout);
    arguments.SetInt(GRPC_ARG_HTTP2_MAX_PINGS_WITHOUT_DATA, 0); // no limit: an answer may take hours
    arguments.SetInt(GRPC_ARG_HTTP2_BDP_PROBE, 0);
    arguments.SetInt(GRPC_ARG_HTTP2_STREAM_LOOKAHEAD_BYTES, kFlowControlWindow);
    arguments.SetInt(GRPC_ARG_HTTP2_MAX_FRAME_SIZE, kLargestFrame);
    arguments.SetInt(GRPC_ARG_INITIAL_RECONNECT_BACKOFF_MS, 200);
    arguments.SetInt(GRPC_ARG_MAX_RECONNECT_BACKOFF_MS, 5000);
    // Calls are not retried, and no environment variable redirects them.
    arguments.SetInt(GRPC_ARG_ENABLE_RETRIES, 0);
    arguments.SetInt(GRPC_ARG_ENABLE_HTTP_PROXY, 0);
    arguments.SetInt(GRPC_ARG_SERVICE_CONFIG_DISABLE_RESOLUTION, 1);
    return arguments;
}

/// Stops OpenSSL from cleaning up when `main` returns, while calls of other threads may still encrypt.
void keepOpenSslToTheEnd()
{
    static std::once_flag once;
    std::call_once(once, [] { OPENSSL_init_ssl(OPENSSL_INIT_NO_ATEXIT, nullptr); });
}

} // namespace

RpcChannel::RpcChannel() = default;
RpcChannel::~RpcChannel() = default;

boost::shared_ptr<RpcChannel> openChannel(const ChannelOptions& options, std::string& error)
{
    Address address;
    if (!parseAddress(options.address, address)) {
        error = "\"" + options.address + "\" is not an address of the form host:port";
        return {};
    }
    if (!isSendableToken(options.token, error))
        return {};
    if (!options.tls && !options.token.empty() && !isLoopbackHost(address.host)) {
        error = "a token may not travel to " + options.address + " in plain text";
        return {};
    }
    std::shared_ptr<grpc::ChannelCredentials> credentials = grpc::InsecureChannelCredentials();
    if (options.tls) {
        keepOpenSslToTheEnd();
        grpc::SslCredentialsOptions tls;
        if (!options.rootCertificate.empty() &&
            !readPemFile(options.rootCertificate, tls.pem_root_certs, error))
            return {};
        credentials = grpc::SslCredentials(tls);
    }
    const std::string target = "dns:///" + options.address;
    return boost::make_shared<GrpcChannel>(grpc::CreateCustomChannel(target, credentials, channelArguments()),
                                           target, options.token);
}

} // namespace wirecall
