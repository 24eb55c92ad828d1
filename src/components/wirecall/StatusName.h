#ifndef LUMO_WIRECALL_STATUSNAME_H
#define LUMO_WIRECALL_STATUSNAME_H

#include <grpcpp/support/status_code_enum.h>

#include <string_view>

namespace wirecall {

/// Returns gRPC's name of a status that a server gives; "UNKNOWN" for any other.
inline std::string_view nameOf(grpc::StatusCode code)
{
    switch (code) {
    case grpc::StatusCode::OK:
        return "OK";
    case grpc::StatusCode::CANCELLED:
        return "CANCELLED";
    case grpc::StatusCode::INVALID_ARGUMENT:
        return "INVALID_ARGUMENT";
    case grpc::StatusCode::NOT_FOUND:
        return "NOT_FOUND";
    case grpc::StatusCode::RESOURCE_EXHAUSTED:
        return "RESOURCE_EXHAUSTED";
    case grpc::StatusCode::UNIMPLEMENTED:
        return "UNIMPLEMENTED";
    case grpc::StatusCode::INTERNAL:
        return "INTERNAL";
    case grpc::StatusCode::UNAUTHENTICATED:
        return "UNAUTHENTICATED";
    default:
        return "UNKNOWN";
    }
}

} // namespace wirecall

#endif
