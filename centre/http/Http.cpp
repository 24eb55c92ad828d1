#include "centre/http/Http.h"

#include <nlohmann/json.hpp>

namespace centre {

namespace {

const char* codeOf(int status)
{
    switch (status) {
    case 400:
        return "BadRequest";
    case 401:
        return "Unauthorized";
    case 403:
        return "Forbidden";
    case 404:
        return "NotFound";
    case 405:
        return "MethodNotAllowed";
    case 413:
        return "ContentTooLarge";
    case 416:
        return "RangeNotSatisfiable";
    case 429:
        return "TooManyRequests";
    case 503:
        return "ServiceUnavailable";
    default:
        return status < 500 ? "Refused" : "ServerError";
    }
}

} // namespace

const std::string* HttpRequest::parameter(const std::string& name) const
{
    for (const auto& [each, value] : query)
        if (each == name)
            return &value;
    return nullptr;
}

const std::string& HttpRequest::header(const std::string& name) const
{
    static const std::string none;
    const auto found = headers.find(name);
    return found == headers.end() ? none : found->second;
}

HttpResponse HttpResponse::document(std::string mediaType, std::string body)
{
    HttpResponse response;
    response.headers.emplace_back("Content-Type", std::move(mediaType));
    response.body = std::move(body);
    return response;
}

HttpResponse HttpResponse::problem(int status, const std::string& description)
{
    const nlohmann::ordered_json object = {{"code", codeOf(status)}, {"description", description}};
    HttpResponse response =
        document("application/json",
                 object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
    response.status = status;
    return response;
}

} // namespace centre
