#ifndef LUMO_CENTRE_HTTP_HTTP_H
#define LUMO_CENTRE_HTTP_HTTP_H

#include "centre/store/Connection.h"
#include "components/bulkhaul/files/Folder.h"

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace centre {

/// A request over HTTP, as handlers get it.
struct HttpRequest
{
    std::string method; ///< "GET", "HEAD", "POST"
    std::string path;   ///< as it came, still with its escapes: "/assets/7/a%20b.tif"
    /// The path's components, each decoded: "assets", "7", "a b.tif". None for "/"; a "/" at the end adds
    /// none. They have no NUL, and none is empty, "." or "..".
    std::vector<std::string> segments;
    /// Names and values, decoded, in the order of the query; a value may be empty.
    std::vector<std::pair<std::string, std::string>> query;
    std::map<std::string, std::string> headers; ///< by name in lower case; of several, the first
    std::string body;                           ///< at most kLargestBody bytes
    std::string peer;                           ///< the client's address, "ipv4:127.0.0.1:4711"
    /// Where the client reaches this server, without "/" at the end: "https://centre.example:8443". Links in
    /// documents begin with it.
    std::string base;
    std::optional<User> user; ///< whose token came with the request; empty: there was none

    static constexpr std::size_t kLargestBody = 1048576;

    /// Returns the first value of that name in the query, or null.
    const std::string* parameter(const std::string& name) const;
    /// Returns the header of that name, in lower case, or an empty text.
    const std::string& header(const std::string& name) const;
};

/// A part of an open file.
struct HttpFile
{
    bulkhaul::FileHandle handle;
    std::uint64_t offset;
    std::uint64_t size;
};

/// What a handler answers. The server adds Content-Length, Date, and the headers of CORS; it leaves the body
/// out for HEAD.
struct HttpResponse
{
    int status = 200;
    std::vector<std::pair<std::string, std::string>> headers; ///< Content-Type among them
    std::string body;
    std::optional<HttpFile> file; ///< sent instead of the body

    /// A document of that media type.
    static HttpResponse document(std::string mediaType, std::string body);
    /// A refusal or failure, as a JSON object with a "code" and a "description".
    static HttpResponse problem(int status, const std::string& description);
};

/// Thrown by handlers: becomes HttpResponse::problem.
class HttpError : public std::runtime_error
{
public:
    HttpError(int status, const std::string& description) : std::runtime_error(description), m_Status(status)
    {
    }
    int status() const { return m_Status; }

private:
    int m_Status;
};

/// Answers the requests of a route. Called on any of the server's threads, several at once, of one user at
/// most half of them. What it throws beside HttpError becomes a problem of status 500, or 503 if the database
/// is busy.
class HttpHandler
{
public:
    virtual ~HttpHandler() = default;
    virtual HttpResponse handle(const HttpRequest& request) = 0;
};

/// The paths that a handler answers: `path` and all below it, except those of a route with a longer path.
struct HttpRoute
{
    /// Whose requests the handler gets. Others are refused with status 401 before.
    enum class Callers
    {
        Users, ///< with a valid token
        Anyone ///< also without one; a token that is not valid is refused all the same
    };

    std::string path; ///< "/collections", or "/" for what no other route answers
    const char* name; ///< the operation in metrics and the call log: a literal
    HttpHandler* handler;
    Callers callers = Callers::Users;
    std::vector<std::string> methods = {"GET"}; ///< GET allows HEAD; others are refused with status 405
    /// The handler takes far less than a millisecond: it runs at once, on a thread that also serves the other
    /// connections.
    bool isQuick = false;
};

} // namespace centre

#endif
