#ifndef LUMO_COMPONENTS_WIRECALL_RPCCONTROLLER_H
#define LUMO_COMPONENTS_WIRECALL_RPCCONTROLLER_H

#include "lumo/components/platform/Export.h"

#include <google/protobuf/service.h>

#include <cstddef>
#include <string>

namespace wirecall {

/// Why a call failed, as far as callers treat the cases differently.
enum class Failure
{
    None,
    NoConnection,    ///< the other side could not be reached, or the connection broke
    TimeLimit,       ///< no answer within the time limit
    Unauthenticated, ///< the token was refused
    NotImplemented,  ///< the other side does not have the operation
    Other            ///< any other failure; see the error text
};

/// The most bytes that the reason beside an answer may have.
constexpr std::size_t kLongestReason = 2048;

/// The settings and the outcome of a call, for one call at a time. Not safe from several threads at once.
class LUMO_EXPORT RpcController : public google::protobuf::RpcController
{
public:
    RpcController();
    ~RpcController() override;

    /// Prepares for the next call; the limits are removed, too.
    void Reset() override;
    /// The longest that the call may take, in milliseconds; 0 or less is no limit.
    void SetTimeout(long long milliseconds);
    long long timeout() const { return m_Timeout; }
    /// Ends a blocking call with Failure::TimeLimit when nothing has moved for so long, in milliseconds; 0 or
    /// less is no limit. Bytes that trickle in or out are progress, also those of other calls over the same
    /// connection. A stall is noticed after up to a quarter more.
    void SetStallLimit(long long milliseconds);
    long long stallLimit() const { return m_StallLimit; }

    /// True after a call that got no valid answer.
    bool Failed() const override;
    std::string ErrorText() const override;
    Failure failure() const { return m_Failure; }
    /// The reason that the server sent beside its answer, in the trailing metadata `lumo-reason-bin`: UTF-8,
    /// of at most kLongestReason bytes, empty if there was none. Inline, so that a program with an RPC
    /// runtime of its own needs to define nothing.
    const std::string& reason() const { return m_Reason; }
    /// False when the request was never sent: there was no connection, or the request was too large.
    bool IsRequestSent() const { return m_RequestSent; }

    /// Not supported: a call can't be cancelled by its caller. It ends at its time limit.
    void StartCancel() override;
    void SetFailed(const std::string& reason) override;
    bool IsCanceled() const override;
    void NotifyOnCancel(google::protobuf::Closure* callback) override;

    /// Sets the outcome of the call; for the channel.
    void setOutcome(Failure failure, const std::string& errorText, bool requestSent);
    /// Sets the reason beside the answer; for the channel.
    void setReason(const std::string& reason) { m_Reason = reason; }

private:
    long long m_Timeout = 0;
    long long m_StallLimit = 0;
    Failure m_Failure = Failure::None;
    bool m_RequestSent = false;
    std::string m_ErrorText;
    std::string m_Reason;
};

} // namespace wirecall

#endif
