#ifndef LUMO_WIRECALL_TOKEN_H
#define LUMO_WIRECALL_TOKEN_H

#include "lumo/components/platform/Export.h"

#include <grpcpp/support/string_ref.h>

#include <map>
#include <string>

namespace wirecall {

/// Whether `token` can go with a call: it has only visible ASCII characters and is not too long. If not,
/// `error` says why, without the token. The empty token, which is not sent, can.
LUMO_EXPORT bool isSendableToken(const std::string& token, std::string& error);

/// Returns the token among the headers of a call; empty if there is none.
std::string tokenOf(const std::multimap<grpc::string_ref, grpc::string_ref>& headers);

} // namespace wirecall

#endif
