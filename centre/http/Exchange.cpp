#include "centre/http/Exchange.h"

#include "centre/http/RequestText.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cctype>
#include <charconv>
#include <memory>

namespace centre {

namespace {

/// A text of the library, which may be null.
std::string textOf(const char* text, std::size_t size)
{
    return text == nullptr ? std::string() : std::string(text, size);
}

MHD_Result takeHeader(void* request, MHD_ValueKind, const char* name, std::size_t nameSize, const char* value,
                      std::size_t valueSize)
{
    std::string lower = textOf(name, nameSize);
    for (char& letter : lower)
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    static_cast<HttpRequest*>(request)->headers.emplace(std::move(lower), textOf(value, valueSize));
    return MHD_YES;
}

MHD_Result takeParameter(void* request, MHD_ValueKind, const char* name, std::size_t nameSize,
                         const char* value, std::size_t valueSize)
{
    static_cast<HttpRequest*>(request)->query.emplace_back(textOf(name, nameSize), textOf(value, valueSize));
    return MHD_YES;
}

/// Where the client has sent the request to.
std::string baseOf(const HttpRequest& request, bool isTls)
{
    const std::string& host = request.header("host");
    if (!isHost(host))
        throw HttpError(400, "the header Host is not a host");
    return (isTls ? "https://" : "http://") + host;
}

} // namespace

HttpRequest readRequest(MHD_Connection& connection, const char* path, const char* method,
                        const std::string& url, bool isTls)
{
    HttpRequest request;
    request.method = method;
    request.path = path;
    request.peer = peerOf(connection);
    ::MHD_get_connection_values_n(&connection, MHD_HEADER_KIND, takeHeader, &request);
    ::MHD_get_connection_values_n(&connection, MHD_GET_ARGUMENT_KIND, takeParameter, &request);
    std::optional<std::vector<std::string>> segments = splitUrlPath(request.path);
    if (!segments)
        throw HttpError(400, "the path is not one that this server has");
    request.segments = *std::move(segments);
    for (auto& [name, value] : request.query) {
        std::optional<std::string> plainName = unescaped(name);
        std::optional<std::string> plainValue = unescaped(value);
        if (!plainName || !plainValue)
            throw HttpError(400, "the query can't be decoded");
        name = *std::move(plainName);
        value = *std::move(plainValue);
    }
    request.base = url.empty() ? baseOf(request, isTls) : url;
    return request;
}

std::uint64_t bodySizeOf(const HttpRequest& request)
{
    if (request.headers.count("transfer-encoding") > 0)
        throw HttpError(411, "the body's size must be announced by Content-Length");
    const std::string& text = request.header("content-length");
    std::uint64_t size = 0;
    const char* const end = text.data() + text.size();
    if (const auto [next, error] = std::from_chars(text.data(), end, size);
        !text.empty() && (error != std::errc() || next != end))
        throw HttpError(400, "the header Content-Length is not a size");
    if (size > HttpRequest::kLargestBody)
        throw HttpError(413,
                        "the body has more than " + std::to_string(HttpRequest::kLargestBody) + " bytes");
    if (size > 0 && (request.method == "GET" || request.method == "HEAD"))
        throw HttpError(400, "a request to read has no body");
    return size;
}

bool send(MHD_Connection& connection, HttpResponse response, bool isLast)
{
    MHD_Response* sent = nullptr;
    if (response.file && response.file->size > 0) {
        sent = ::MHD_create_response_from_fd_at_offset64(response.file->size, response.file->handle.get(),
                                                         response.file->offset);
        if (sent != nullptr)
            response.file->handle.release();
    } else {
        auto body = std::make_unique<std::string>(std::move(response.body));
        const auto free = [](void* text) { delete static_cast<std::string*>(text); };
        sent = ::MHD_create_response_from_buffer_with_free_callback_cls(body->size(), body->data(), free,
                                                                        body.get());
        if (sent != nullptr)
            static_cast<void>(body.release());
    }
    if (sent == nullptr)
        return false;
    if (isLast)
        response.headers.emplace_back("Connection", "close");
    bool isComplete = true;
    for (const auto& [name, value] : response.headers)
        isComplete = ::MHD_add_response_header(sent, name.c_str(), value.c_str()) == MHD_YES && isComplete;
    const auto status = static_cast<unsigned int>(response.status);
    const bool isQueued = isComplete && ::MHD_queue_response(&connection, status, sent) == MHD_YES;
    ::MHD_destroy_response(sent);
    return isQueued;
}

std::string peerOf(MHD_Connection& connection)
{
    const MHD_ConnectionInfo* info =
        ::MHD_get_connection_info(&connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
    if (info == nullptr || info->client_addr == nullptr)
        return {};
    char host[INET6_ADDRSTRLEN] = "";
    if (info->client_addr->sa_family == AF_INET6) {
        const auto& address = *reinterpret_cast<const sockaddr_in6*>(info->client_addr);
        ::inet_ntop(AF_INET6, &address.sin6_addr, host, sizeof host);
        return "ipv6:[" + std::string(host) + "]:" + std::to_string(ntohs(address.sin6_port));
    }
    const auto& address = *reinterpret_cast<const sockaddr_in*>(info->client_addr);
    ::inet_ntop(AF_INET, &address.sin_addr, host, sizeof host);
    return "ipv4:" + std::string(host) + ":" + std::to_string(ntohs(address.sin_port));
}

const char* outcomeOf(int status)
{
    switch (status) {
    case 0:
        return "CANCELLED";
    case 401:
        return "UNAUTHENTICATED";
    case 403:
        return "PERMISSION_DENIED";
    case 404:
        return "NOT_FOUND";
    case 405:
        return "UNIMPLEMENTED";
    case 416:
        return "OUT_OF_RANGE";
    case 413:
    case 429:
        return "RESOURCE_EXHAUSTED";
    case 503:
        return "UNAVAILABLE";
    default:
        return status < 400 ? "OK" : status < 500 ? "INVALID_ARGUMENT" : "INTERNAL";
    }
}

} // namespace centre
