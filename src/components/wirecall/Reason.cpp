#include "components/wirecall/Reason.h"

#include "lumo/components/platform/Utf8.h"
#include "lumo/components/wirecall/RpcController.h"

namespace wirecall {

std::string shortReason(const std::string& text)
{
    if (text.size() <= kLongestReason)
        return text;
    std::size_t end = kLongestReason;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) // within a character
        --end;
    return text.substr(0, end);
}

std::string reasonIn(const std::multimap<grpc::string_ref, grpc::string_ref>& trailingMetadata)
{
    const auto found = trailingMetadata.find(kReasonKey);
    if (found == trailingMetadata.end())
        return {};
    const std::string text = shortReason(std::string(found->second.data(), found->second.size()));
    return platform::isUtf8(text) ? text : std::string();
}

} // namespace wirecall
