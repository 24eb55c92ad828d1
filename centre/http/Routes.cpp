#include "centre/http/Routes.h"

#include "centre/base/Error.h"
#include "centre/database/DatabaseError.h"

#include <algorithm>
#include <iostream>
#include <strings.h>

namespace centre {

namespace {

constexpr char kScheme[] = "bearer ";

/// Whether the path of a route, "/a/b", begins a request's.
bool begins(const std::string& path, const std::vector<std::string>& segments)
{
    std::string whole;
    for (const std::string& segment : segments) {
        if (whole.size() >= path.size())
            break;
        whole += "/" + segment;
    }
    return path == "/" || whole == path;
}

/// Returns the token of a header "Bearer TOKEN". Throws HttpError for another one.
std::string tokenIn(const std::string& header)
{
    const std::size_t length = sizeof kScheme - 1;
    if (::strncasecmp(header.c_str(), kScheme, length) != 0)
        throw HttpError(401, "the header Authorization is not \"Bearer TOKEN\"");
    return header.substr(std::min(header.find_first_not_of(' ', length), header.size()));
}

User userOf(ConnectionPool& pool, const std::string& token)
{
    ConnectionPool::Lease connection(pool);
    const Read read(*connection);
    std::string reason;
    if (std::optional<User> user = connection->user(token, reason))
        return *std::move(user);
    throw HttpError(401, reason);
}

HttpResponse failure(const HttpRoute& route, int status, const char* description, const char* reason)
{
    std::cerr << std::string("lumo-centre: ") + route.name + ": " + reason + "\n";
    return HttpResponse::problem(status, description);
}

} // namespace

const HttpRoute* Routes::find(const HttpRequest& request) const
{
    const HttpRoute* found = nullptr;
    for (const HttpRoute& route : m_Routes)
        if (begins(route.path, request.segments) &&
            (found == nullptr || route.path.size() > found->path.size()))
            found = &route;
    return found;
}

void Routes::admit(const HttpRoute& route, HttpRequest& request) const
{
    const std::string method = request.method == "HEAD" ? "GET" : request.method;
    if (std::find(route.methods.begin(), route.methods.end(), method) == route.methods.end())
        throw HttpError(405, "this path does not have the method " + request.method);
    if (const auto header = request.headers.find("authorization"); header != request.headers.end())
        request.user = userOf(m_Pool, tokenIn(header->second));
    else if (route.callers == HttpRoute::Callers::Users)
        throw HttpError(401, "the request has no token: send the header \"Authorization: Bearer TOKEN\"");
}

HttpResponse Routes::run(const HttpRoute& route, const HttpRequest& request)
try {
    return route.handler->handle(request);
} catch (const HttpError& error) {
    return HttpResponse::problem(error.status(), error.what());
} catch (const DatabaseError& error) {
    if (error.kind() == DatabaseError::Kind::Busy)
        return failure(route, 503, "the catalogue is busy; try again", error.what());
    return failure(route, 500, "the catalogue failed", error.what());
} catch (const std::exception& error) {
    return failure(route, 500, "the server failed", error.what());
}

HttpResponse preflight()
{
    HttpResponse response;
    response.status = 204;
    response.headers = {
        {"Access-Control-Allow-Methods", "GET, HEAD, POST, OPTIONS"},
        {"Access-Control-Allow-Headers",
         "Authorization, Content-Type, If-Modified-Since, If-None-Match, If-Range, Range"},
        {"Access-Control-Max-Age", "86400"},
    };
    return response;
}

void addCommonHeaders(HttpResponse& response)
{
    // A token is never sent by the browser itself, so that a page of any origin reads only what its user gave
    // it the token for.
    response.headers.emplace_back("Access-Control-Allow-Origin", "*");
    response.headers.emplace_back("Access-Control-Expose-Headers",
                                  "Accept-Ranges, Content-Disposition, Content-Length, Content-Range, ETag,"
                                  " Last-Modified, Retry-After, WWW-Authenticate");
    response.headers.emplace_back("X-Content-Type-Options", "nosniff");
    response.headers.emplace_back("Referrer-Policy", "no-referrer");
    if (response.status == 401)
        response.headers.emplace_back("WWW-Authenticate", "Bearer realm=\"lumo-centre\"");
    if (response.status == 429 || response.status == 503)
        response.headers.emplace_back("Retry-After", "1");
}

} // namespace centre
