#ifndef LUMO_CENTRE_HTTP_EXCHANGE_H
#define LUMO_CENTRE_HTTP_EXCHANGE_H

#include "centre/http/Http.h"

#include <microhttpd.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace centre {

/// A request under way and what became of it.
struct Exchange
{
    HttpRequest request;
    const HttpRoute* route = nullptr;     ///< null until it is found
    std::optional<HttpResponse> response; ///< to be sent when the library calls again
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
    std::uint64_t bodySize = 0; ///< as the client announced it
    std::string counted;        ///< the user or address that the request is counted for; empty: not counted
    int status = 0;             ///< of the response; 0: there was none
    std::uint64_t responseSize = 0;
};

/// Reads a request's line and headers from the library. `url` is where clients reach the server; empty: that
/// is taken from the header Host. Throws HttpError for what is not a request.
HttpRequest readRequest(MHD_Connection& connection, const char* path, const char* method,
                        const std::string& url, bool isTls);

/// Returns the size of the request's body. Throws HttpError for one that is too large or of unknown size.
std::uint64_t bodySizeOf(const HttpRequest& request);

/// Passes a response on to the library, which sends it. `isLast`: the connection is closed then. Returns
/// false if it can't be sent.
bool send(MHD_Connection& connection, HttpResponse response, bool isLast);

/// Returns the client's address as "ipv4:HOST:PORT", "ipv6:[HOST]:PORT".
std::string peerOf(MHD_Connection& connection);

/// Returns gRPC's name for the status, by which calls are counted and logged: "OK", "NOT_FOUND"; "CANCELLED"
/// for 0.
const char* outcomeOf(int status);

} // namespace centre

#endif
