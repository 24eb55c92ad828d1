#ifndef LUMO_WIRECALL_REASON_H
#define LUMO_WIRECALL_REASON_H

#include <grpcpp/support/string_ref.h>

#include <map>
#include <string>

namespace wirecall {

/// The trailing metadata with the reason of an answer that refuses. gRPC sends values of keys that end in
/// "-bin" as they are, so UTF-8 needs no escapes.
constexpr char kReasonKey[] = "lumo-reason-bin";

/// Returns the text, cut at a character's end to what may be sent.
std::string shortReason(const std::string& text);

/// Returns the reason in what a server sent, at most as long as it may be; empty if there is none or it is
/// not UTF-8.
std::string reasonIn(const std::multimap<grpc::string_ref, grpc::string_ref>& trailingMetadata);

} // namespace wirecall

#endif
