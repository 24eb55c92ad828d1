#ifndef LUMO_CENTRE_HTTP_REQUESTTEXT_H
#define LUMO_CENTRE_HTTP_REQUESTTEXT_H

#include <optional>
#include <string>
#include <vector>

namespace centre {

/// Returns a text without its escapes ("%20"), or nothing if one is not two hexadecimal digits, or if
/// the text is not UTF-8 or has a NUL.
std::optional<std::string> unescaped(const std::string& text);

/// Returns the decoded components of a path that begins with "/", or nothing if one is empty, "." or "..",
/// has a
/// "/" or can't be decoded. One "/" at the end is left out.
std::optional<std::vector<std::string>> splitUrlPath(const std::string& path);

/// Whether the value of a header Host is a name or an address with or without a port.
bool isHost(const std::string& text);

} // namespace centre

#endif
