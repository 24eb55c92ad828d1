#include "centre/endpoint/ListenOptions.h"

#include "centre/base/Error.h"
#include "components/wirecall/Address.h"

#include <arpa/inet.h>
#include <regex>

namespace centre {

void requireSafe(const ListenOptions& options)
{
    wirecall::Address address;
    if (!wirecall::parseAddress(options.address, address))
        throw Error(ExitCode::WrongUse, "not an address: " + options.address + "; an address is HOST:PORT");
    if (options.tlsCertificate.empty() != options.tlsKey.empty())
        throw Error(ExitCode::WrongUse, "a TLS certificate needs its key, and the key its certificate");
    if (options.tlsCertificate.empty() && !options.plainText && !wirecall::isLoopbackHost(address.host))
        throw Error(ExitCode::WrongUse,
                    options.address + " can be reached from other machines: give --tls-cert and --tls-key,"
                                      " or --plain-text if everyone on the network may read it");
    static const std::regex url(R"(https?://[A-Za-z0-9._:\[\]-]+)");
    if (!options.httpUrl.empty() && !std::regex_match(options.httpUrl, url))
        throw Error(ExitCode::WrongUse, "not https://HOST[:PORT], without a path: " + options.httpUrl);
}

void requireOneHost(const std::string& text)
{
    wirecall::Address address;
    in_addr v4 = {};
    in6_addr v6 = {};
    if (!wirecall::parseAddress(text, address))
        return; // the endpoint throws
    const char* host = address.host.c_str();
    if ((::inet_pton(AF_INET, host, &v4) == 1 && v4.s_addr == INADDR_ANY) ||
        (::inet_pton(AF_INET6, host, &v6) == 1 && IN6_IS_ADDR_UNSPECIFIED(&v6)))
        throw Error(ExitCode::WrongUse,
                    "clients must reach a box at the address that it listens on: give a name or an"
                    " address of this machine, not " +
                        address.host);
}

} // namespace centre
