#ifndef LUMO_CENTRE_HTTP_ROUTES_H
#define LUMO_CENTRE_HTTP_ROUTES_H

#include "centre/http/Http.h"
#include "centre/store/ConnectionPool.h"

#include <string>
#include <vector>

namespace centre {

/// The routes of a server, and who may use them.
class Routes
{
public:
    explicit Routes(ConnectionPool& pool) : m_Pool(pool) {}

    void add(HttpRoute route) { m_Routes.push_back(std::move(route)); }

    /// Returns the route of a request, or null.
    const HttpRoute* find(const HttpRequest& request) const;
    /// Sets the request's user from its token. Throws HttpError for a method that the route does not have,
    /// and for a caller who may not use it.
    void admit(const HttpRoute& route, HttpRequest& request) const;
    /// Runs the route's handler. Exceptions become problems.
    static HttpResponse run(const HttpRoute& route, const HttpRequest& request);

private:
    ConnectionPool& m_Pool;
    std::vector<HttpRoute> m_Routes;
};

/// Returns the answer to a question of a browser whether a page of another origin may send a request.
HttpResponse preflight();

/// Adds the headers that every response has.
void addCommonHeaders(HttpResponse& response);

} // namespace centre

#endif
