#include "components/wirecall/GrpcChannel.h"

#include "components/wirecall/Address.h"
#include "components/wirecall/BoundedMessage.h"
#include "components/wirecall/ClientCall.h"
#include "components/wirecall/HandOver.h"
#include "components/wirecall/PemFile.h"
#include "components/wirecall/Token.h"
#include "components/wirecall/WireLimits.h"

#include <boost/make_shared.hpp>
#include <google/protobuf/message.h>
#include <grpcpp/alarm.h>
#include <grpcpp/create_channel.h>
#include <grpcpp/impl/codegen/proto_utils.h>
#include <grpcpp/resource_quota.h>
#include <grpcpp/security/credentials.h>
#include <grpcpp/support/async_unary_call.h>
#include <grpcpp/support/channel_arguments.h>
#include <grpcpp/support/client_callback.h>
#include <openssl/ssl.h>

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

namespace wirecall {

using google::protobuf::Closure;
using google::protobuf::Message;
using google::protobuf::MethodDescriptor;
using grpc::internal::RpcMethod;

namespace {

/// A call without a time limit ends this long after the other side stopped answering, in milliseconds.
constexpr int kKeepaliveTime = 20000;
constexpr int kKeepaliveTimeout = 10000;

/// The first channel that made a call with a closure.
std::atomic<std::shared_ptr<grpc::Channel>*> keptForItsThreads{nullptr};

/// Runs a closure on a thread of gRPC.
void runElsewhere(Closure& done)
{
    auto* alarm = new grpc::Alarm;
    handOver(alarm);
    alarm->Set(std::chrono::system_clock::now(), [alarm, &done](bool) {
        takeOver(alarm);
        delete alarm;
        done.Run();
    });
}

/// Bounds what arrives from one address. Channels to it share the quota, and so their connection. With a
/// quota for several addresses, gRPC was measured to exceed it by hundreds of MiB: it asks idle connections
/// for memory first, on the thread that is busy with what arrives.
const grpc::ResourceQuota& arrivingFrom(const std::string& target)
{
    static std::mutex mutex;
    static auto* const quotas = new std::map<std::string, grpc::ResourceQuota>; // in use to the end
    const std::lock_guard<std::mutex> lock(mutex);
    const auto [quota, isNew] = quotas->try_emplace(target, target);
    if (isNew)
        quota->second.Resize(mayArrive(kMostArriving));
    return quota->second;
}

grpc::ChannelArguments channelArguments(const std::string& target)
{
    grpc::ChannelArguments arguments;
    arguments.SetResourceQuota(arrivingFrom(target));
    arguments.SetInt(GRPC_COMPRESSION_CHANNEL_ENABLED_ALGORITHMS_BITSET, 1 << GRPC_COMPRESS_NONE);
    arguments.SetInt(GRPC_ARG_ENABLE_PER_MESSAGE_DECOMPRESSION, 0);
    arguments.SetMaxReceiveMessageSize(kLargestAnswer);
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

void GrpcChannel::CallMethod(const MethodDescriptor* method, google::protobuf::RpcController* controller,
                             const Message* request, Message* response, Closure* done)
{
    RpcController& call = *static_cast<RpcController*>(controller);
    if (refuseTooLarge(*request, call)) {
        if (done != nullptr)
            runElsewhere(*done);
    } else if (done == nullptr) {
        callAndWait(*method, call, *request, *response);
    } else {
        callAndReturn(*method, call, *request, *response, *done);
    }
}

void GrpcChannel::callAndWait(const MethodDescriptor& method, RpcController& controller,
                              const Message& request, Message& response) const
{
    WaitingCall call(m_Connection, method, RpcMethod::NORMAL_RPC, controller);
    BoundedAnswer answer(response);
    grpc::Status status;
    const std::unique_ptr<grpc::ClientAsyncResponseReader<BoundedAnswer>> reader(
        grpc::internal::ClientAsyncResponseReaderHelper::Create<BoundedAnswer, Message>(
            &call.channel(), &call.queue(), call.method(), &call.context(), request));
    reader->StartCall();
    reader->Finish(&answer, &status, nullptr);
    bool ok = false;
    call.wait(ok);
    call.conclude(answer.outcome(status));
}

void GrpcChannel::callAndReturn(const MethodDescriptor& method, RpcController& controller,
                                const Message& request, Message& response, Closure& done) const
{
    struct Call : ClientCall
    {
        using ClientCall::ClientCall;
        std::optional<BoundedAnswer> answer;
    };
    auto* call = new Call(m_Connection, method, RpcMethod::NORMAL_RPC, controller);
    call->answer.emplace(response);
    // gRPC ends its callback threads when the last channel that used them ends, which may happen on one of
    // them. The first such channel is kept for ever, so that there is no last one.
    static std::once_flag once;
    std::call_once(once,
                   [this] { keptForItsThreads = new std::shared_ptr<grpc::Channel>(m_Connection->channel); });
    handOver(call);
    grpc::internal::CallbackUnaryCall(&call->channel(), call->method(), &call->context(), &request,
                                      &*call->answer, [call, &controller, &done](const grpc::Status& status) {
                                          takeOver(call);
                                          call->conclude(controller, call->answer->outcome(status));
                                          delete call;
                                          done.Run();
                                      });
}

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
    return boost::make_shared<GrpcChannel>(std::make_shared<const Connection>(
        Connection{grpc::CreateCustomChannel(target, credentials, channelArguments(target)), target,
                   options.token.empty() ? std::string() : "Bearer " + options.token}));
}

} // namespace wirecall
