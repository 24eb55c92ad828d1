#ifndef LUMO_WIRECALL_ADDRESS_H
#define LUMO_WIRECALL_ADDRESS_H

#include "lumo/components/platform/Export.h"

#include <string>

namespace wirecall {

/// A network address as "host:port": a name, an IPv4 address, or an IPv6 address in brackets.
struct Address
{
    std::string host; ///< without brackets
    int port = 0;     ///< 0 to 65535
};

/// Returns false unless `text` has exactly that form, so that nothing else (a URI scheme, a path) reaches the
/// name resolver.
LUMO_EXPORT bool parseAddress(const std::string& text, Address& address);

/// Whether `host` is this machine: localhost, 127.0.0.0/8 or ::1.
LUMO_EXPORT bool isLoopbackHost(const std::string& host);

} // namespace wirecall

#endif
