#include "centre/http/Assets.h"

#include "centre/base/Path.h"
#include "centre/database/Sql.h"
#include "centre/database/Statement.h"
#include "centre/http/FileResponse.h"
#include "centre/http/HttpServer.h"
#include "centre/store/Ownership.h"
#include "components/bulkhaul/files/FileFailure.h"
#include "components/bulkhaul/files/Folder.h"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <ctime>

namespace centre {

namespace {

// One text for what does not exist and for what belongs to another company.
constexpr char kNoFile[] = "no such file";

const Sql kPlace("SELECT root_path, kesta_code, http_url FROM file JOIN folder ON folder.id = file.parent_id"
                 " JOIN disk ON disk.id = disk_id JOIN box ON code = kesta_code"
                 " WHERE file.parent_id = :folder AND file.name = :name AND " +
                 readable("disk", "disk.id"));

template <class Number>
std::optional<Number> numberIn(const std::string& text)
{
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && next == end ? std::optional(number) : std::nullopt;
}

/// "/assets/FOLDER/NAME" or "/links/FOLDER/NAME"
std::uint32_t folderOf(const HttpRequest& request)
{
    const auto id =
        request.segments.size() == 3 ? numberIn<std::uint32_t>(request.segments[1]) : std::nullopt;
    if (!id)
        throw HttpError(404, kNoFile);
    return *id;
}

bulkhaul::FileHandle open(const std::string& root, const std::string& below)
try {
    std::vector<std::string> components = bulkhaul::splitBelow(below);
    const std::string name = components.back();
    components.pop_back();
    const bulkhaul::Folder folder = bulkhaul::Folder::open(root).below(components);
    // Without waiting for a pipe's other end.
    bulkhaul::FileHandle file(
        ::openat(folder.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file)
        throw HttpError(404, "the file is registered, but can't be read on its box");
    return file;
} catch (const bulkhaul::FileFailure&) {
    throw HttpError(404, "the file is registered, but can't be read on its box");
}

std::string utcText(std::int64_t seconds)
{
    const std::time_t time = seconds;
    std::tm parts = {};
    ::gmtime_r(&time, &parts);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

} // namespace

Assets::Assets(ConnectionPool& pool, std::string linkSecret, std::vector<std::string> boxes)
    : m_Pool(pool), m_Links(std::move(linkSecret)), m_Boxes(std::move(boxes))
{
}

void Assets::addTo(HttpServer& server)
{
    server.add({"/assets", "assets", &m_FileHandler, HttpRoute::Callers::Anyone, {"GET"}, true});
    server.add({"/links", "links", &m_LinkHandler});
}

HttpResponse Assets::serve(const HttpRequest& request)
{
    Place place;
    std::string redirection;
    {
        ConnectionPool::Lease connection(m_Pool);
        const Read read(*connection);
        const User user = callerOf(*connection, request);
        place = find(*connection, user, request);
        if (!isHere(place) && !place.boxUrl.empty() && place.boxUrl != request.base)
            redirection = place.boxUrl + m_Links.sign(place.folderId, place.name, user,
                                                      std::time(nullptr) + AssetLinks::kUsualSeconds);
    }
    if (isHere(place))
        return fileResponse(open(place.root, place.below), place.name, request);
    if (redirection.empty())
        throw HttpError(404, "the box that holds this file does not serve HTTP");
    HttpResponse response;
    response.status = 307;
    response.headers = {{"Location", redirection}, {"Cache-Control", "no-store"}};
    return response;
}

HttpResponse Assets::makeLink(const HttpRequest& request)
{
    std::int64_t seconds = AssetLinks::kUsualSeconds;
    if (const std::string* wanted = request.parameter("seconds"))
        seconds = numberIn<std::int64_t>(*wanted).value_or(0);
    if (seconds < 1 || seconds > AssetLinks::kMostSeconds)
        throw HttpError(400,
                        "seconds must be a number from 1 to " + std::to_string(AssetLinks::kMostSeconds));
    ConnectionPool::Lease connection(m_Pool);
    const Read read(*connection);
    const Place place = find(*connection, *request.user, request);
    const std::int64_t until = std::time(nullptr) + seconds;
    const std::string& url = isHere(place) || place.boxUrl.empty() ? request.base : place.boxUrl;
    const nlohmann::ordered_json link = {
        {"href", url + m_Links.sign(place.folderId, place.name, *request.user, until)},
        {"until", utcText(until)}};
    HttpResponse response = HttpResponse::document("application/json", link.dump() + "\n");
    response.headers.emplace_back("Cache-Control", "no-store");
    return response;
}

Assets::Place Assets::find(Connection& connection, const User& user, const HttpRequest& request) const
{
    const std::uint32_t folderId = folderOf(request);
    const std::string& name = request.segments[2];
    Statement& row = connection.statement(kPlace);
    const ResetAtEnd resetAtEnd(row);
    row.bindAll(folderId, name, user.companyId);
    const FolderPath* folder = row.step() ? connection.folderPath(folderId) : nullptr;
    if (folder == nullptr)
        throw HttpError(404, kNoFile);
    const std::string root = row.string(0);
    const std::string path = (folder->path == "/" ? "" : folder->path) + "/" + name;
    if (!isPlainAbsolutePath(path) || !isAtOrBelow(root, path) || overlap(m_Pool.dataFolder(), path))
        throw HttpError(404, kNoFile);
    return {folderId, name, root, pathBelow(root, path), row.string(1), row.string(2)};
}

User Assets::callerOf(Connection& connection, const HttpRequest& request) const
{
    if (request.user)
        return *request.user;
    const std::string* const link = request.parameter("link");
    if (link == nullptr)
        throw HttpError(401, "the request has neither a token nor a signed link");
    std::string reason;
    const std::uint32_t folderId = folderOf(request);
    if (std::optional<User> user = m_Links.verify(connection, folderId, request.segments[2], *link, reason))
        return *std::move(user);
    throw HttpError(403, reason);
}

bool Assets::isHere(const Place& place) const
{
    return std::find(m_Boxes.begin(), m_Boxes.end(), place.box) != m_Boxes.end();
}

} // namespace centre
