#include "lumo/components/wirecall/RpcController.h"

namespace wirecall {

RpcController::RpcController() = default;
RpcController::~RpcController() = default;

void RpcController::Reset()
{
    m_Timeout = 0;
    m_StallLimit = 0;
    setOutcome(Failure::None, std::string(), false);
    setReason(std::string());
}

void RpcController::SetTimeout(long long milliseconds)
{
    m_Timeout = milliseconds;
}

void RpcController::SetStallLimit(long long milliseconds)
{
    m_StallLimit = milliseconds;
}

bool RpcController::Failed() const
{
    return m_Failure != Failure::None;
}

std::string RpcController::ErrorText() const
{
    return m_ErrorText;
}

void RpcController::StartCancel()
{
}

void RpcController::SetFailed(const std::string& reason)
{
    m_Failure = Failure::Other;
    m_ErrorText = reason;
}

bool RpcController::IsCanceled() const
{
    return false;
}

void RpcController::NotifyOnCancel(google::protobuf::Closure*)
{
}

void RpcController::setOutcome(Failure failure, const std::string& errorText, bool requestSent)
{
    m_Failure = failure;
    m_ErrorText = errorText;
    m_RequestSent = requestSent;
}

} // namespace wirecall
