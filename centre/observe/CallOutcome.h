#ifndef LUMO_CENTRE_OBSERVE_CALLOUTCOME_H
#define LUMO_CENTRE_OBSERVE_CALLOUTCOME_H

#include "lumo/components/wirecall/RpcServer.h"

#include <string_view>

namespace centre {

/// How bad it is.
enum class Severity
{
    Info,   ///< the call was answered
    Warning, ///< it was refused or cancelled, or a transfer did not succeed
    Error   ///< the centre failed
};

/// How a call went, in one word of a fixed set.
struct CallOutcome
{
    std::string_view result;
    Severity severity;
};

/// Returns gRPC's name of the status of a call that failed, or else the result in its response: "done",
/// "nothing_found" or "failed" of a centre's service, the status' name of a box's ("KEPT"), "OK" of any other.
CallOutcome outcomeOf(const wirecall::CallReport& report);

/// Returns the name of the operation, without package and service; "unknown" if there is no such operation.
std::string_view operationOf(const wirecall::ServerCall& call);

} // namespace centre

#endif
