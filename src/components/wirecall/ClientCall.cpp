#include "components/wirecall/ClientCall.h"

#include "components/wirecall/HandOver.h"
#include "components/wirecall/Reason.h"
#include "components/wirecall/Traffic.h"
#include "components/wirecall/WireLimits.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace wirecall {

namespace {

using google::protobuf::MethodDescriptor;
using Clock = std::chrono::system_clock; // gRPC's deadlines are of this clock

/// gRPC's words for a quota that is used up, of this side and of the other.
constexpr char kQuotaIsUsedUp[] = "Buffers full";
constexpr char kGoAway[] = "GOAWAY received";
constexpr char kTheirQuotaIsUsedUp[] = "Received RST_STREAM with error code 11";
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

std::string pathOf(const MethodDescriptor& method)
{
    const std::string& service = method.service()->full_name();
    std::string path;
    path.reserve(service.size() + method.name().size() + 2);
    path.append("/").append(service).append("/").append(method.name());
    return path;
}

std::chrono::milliseconds limit(long long milliseconds)
{
    return std::chrono::milliseconds(std::min(milliseconds, kLongestTimeLimit));
}

} // namespace

bool refuseTooLarge(const google::protobuf::Message& request, RpcController& controller)
{
    const std::size_t size = request.ByteSizeLong();
    if (size <= kLargestMessage)
        return false;
    controller.setOutcome(Failure::Other,
                          "the request has " + std::to_string(size) + " bytes, more than the " +
                              std::to_string(kLargestMessage) + " that a message may have",
                          false);
    return true;
}

ClientCall::ClientCall(std::shared_ptr<const Connection> connection, const MethodDescriptor& method,
                       grpc::internal::RpcMethod::RpcType type, const RpcController& settings)
    : m_Connection(std::move(connection)),
      m_Path(pathOf(method)),
      m_Method(m_Path.c_str(), type),
      m_WasConnected(isConnected())
{
    if (settings.timeout() > 0)
        m_Context.set_deadline(Clock::now() + limit(settings.timeout()));
    if (!m_Connection->authorization.empty())
        m_Context.AddMetadata("authorization", m_Connection->authorization);
}

bool ClientCall::isConnected() const
{
    return channel().GetState(false) == GRPC_CHANNEL_READY;
}

void ClientCall::conclude(RpcController& controller, const grpc::Status& status) const
{
    controller.setReason(reasonIn(m_Context.GetServerTrailingMetadata()));
    if (status.ok()) {
        controller.setOutcome(Failure::None, std::string(), true);
        return;
    }
    // A call that began without a connection may have got one. Until then gRPC names the target as its peer.
    const bool sent = m_WasConnected || m_Context.peer() != m_Connection->target || isConnected();
    std::string text = status.error_message().empty() ? "unknown failure" : status.error_message();
    if (text == kQuotaIsUsedUp)
        text = "what arrives takes more memory than it may";
    else if (text == kTheirQuotaIsUsedUp)
        text = "what arrives at the server takes more memory than it may";
    else if (text == kGoAway)
        text = "the server takes no calls over this connection: it has too many connections, or ends";
    controller.setOutcome(failureOf(status.error_code()), text, sent);
}

WaitingCall::WaitingCall(std::shared_ptr<const Connection> connection, const MethodDescriptor& method,
                         grpc::internal::RpcMethod::RpcType type, RpcController& controller)
    : m_Controller(controller), m_Call(std::move(connection), method, type, controller)
{
}

void* WaitingCall::wait(bool& ok)
{
    void* tag = nullptr;
    if (m_Controller.stallLimit() <= 0 || m_Stalled) {
        m_Queue.Next(&tag, &ok);
        takeOver(this);
        return tag;
    }
    StallWatch watch(limit(m_Controller.stallLimit()));
    while (m_Queue.AsyncNext(&tag, &ok, watch.nextLook()) == grpc::CompletionQueue::TIMEOUT) {
        if (watch.isStalled(context().peer())) {
            m_Stalled = true;
            cancel();
            return wait(ok);
        }
    }
    takeOver(this);
    return tag;
}

void WaitingCall::conclude(const grpc::Status& status)
{
    m_Call.conclude(m_Controller, status);
    if (m_Stalled && status.error_code() == grpc::StatusCode::CANCELLED)
        m_Controller.setOutcome(Failure::TimeLimit,
                                "nothing moved for " + std::to_string(m_Controller.stallLimit()) + " ms",
                                m_Controller.IsRequestSent());
}

void WaitingCall::end()
{
    cancel();
    m_Queue.Shutdown();
    void* tag = nullptr;
    bool ok = false;
    while (m_Queue.Next(&tag, &ok)) {
    }
}

} // namespace wirecall
