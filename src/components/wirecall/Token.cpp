#include "components/wirecall/Token.h"

#include <algorithm>
#include <cstddef>

namespace wirecall {

namespace {

/// In bytes. gRPC takes 8 KiB of headers for each call, names and 32 bytes for each included; what comes
/// besides the token was measured at 0.5 KiB, and a long address and method fit into the rest.
constexpr std::size_t kLongestToken = 7168;
constexpr char kBearer[] = "Bearer ";

} // namespace

bool isSendableToken(const std::string& token, std::string& error)
{
    // gRPC ends the process on a header value that HTTP/2 does not allow.
    const bool visible =
        std::all_of(token.begin(), token.end(), [](unsigned char c) { return c >= 0x21 && c <= 0x7E; });
    if (!visible)
        error =
            "the token can't be sent: it has blanks, line ends, control characters or characters that are "
            "not ASCII";
    else if (token.size() > kLongestToken)
        error = "the token can't be sent: it has " + std::to_string(token.size()) + " bytes, more than " +
                std::to_string(kLongestToken);
    return visible && token.size() <= kLongestToken;
}

std::string tokenOf(const std::multimap<grpc::string_ref, grpc::string_ref>& headers)
{
    const auto found = headers.find("authorization");
    if (found == headers.end() || !found->second.starts_with(kBearer))
        return {};
    const grpc::string_ref token = found->second.substr(sizeof kBearer - 1);
    return std::string(token.data(), token.size());
}

} // namespace wirecall
