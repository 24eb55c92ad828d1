#ifndef LUMO_CENTRE_OBSERVE_CALLOUTCOME_H
#define LUMO_CENTRE_OBSERVE_CALLOUTCOME_H

#include "lumo/components/wirecall/RpcServer.h"

#include <string_view>

namespace centre {

enum class Severity
{
    Info,    ///< the call was answered
    Warning, ///< it was refused or cancelled, or a box did not do what it was asked for
    Error    ///< the centre or the box failed
};

/// Returns what a response says, in a word of a fixed set: "done", "nothing_found" or "failed" by a result of
/// a centre's service, the name of a box's status, "OK" for any other response.
std::string_view resultOf(const google::protobuf::Message& response);

/// How a call went: gRPC's name of its status if it failed, or else the result of its response.
struct CallOutcome
{
    explicit CallOutcome(const wirecall::CallReport& report);

    std::string_view result;
    Severity severity;
};

} // namespace centre

#endif
