#include "centre/stac/StacApi.h"

#include "centre/base/Text.h"
#include "centre/stac/JsonText.h"
#include "centre/stac/StacDocuments.h"

#include <algorithm>
#include <utility>

namespace centre {

namespace {

using nlohmann::json;

HttpResponse documentResponse(const json& document, const char* mediaType = kJson)
{
    return HttpResponse::document(mediaType, textOf(document));
}

HttpError notFound(const std::string& what)
{
    return {404, "there is no " + what};
}

std::string escapedForUrl(const std::string& text)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string escaped;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        const bool isPlain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                             (byte >= 'a' && byte <= 'z') || byte == '-' || byte == '_' || byte == '.' ||
                             byte == '~' || byte == ',' || byte == ':' || byte == '/';
        if (isPlain)
            escaped += character;
        else
            escaped.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
    return escaped;
}

/// The address of a request, with another token than it came with; without one if `token` is empty.
std::string addressWith(const HttpRequest& request, const std::string& token)
{
    std::string query;
    const auto add = [&query](const std::string& name, const std::string& value) {
        query += (query.empty() ? "?" : "&") + escapedForUrl(name) + "=" + escapedForUrl(value);
    };
    for (const auto& [name, value] : request.query)
        if (name != "token")
            add(name, value);
    if (!token.empty())
        add("token", token);
    return request.base + request.path + query;
}

/// Writes a FeatureCollection. `links` are those of the page.
HttpResponse pageResponse(const ItemPage& page, const json& links)
{
    std::size_t size = 0;
    for (const std::string& item : page.items)
        size += item.size() + 1;
    std::string text = R"({"type":"FeatureCollection","features":[)";
    constexpr std::size_t kRest = 4096;
    text.reserve(size + kRest);
    for (const std::string& item : page.items) {
        if (&item != &page.items.front())
            text += ",";
        text += item;
    }
    text += "],\"numberReturned\":" + std::to_string(page.items.size()) + ",\"links\":" + textOf(links) + "}";
    return HttpResponse::document(kGeoJson, std::move(text));
}

} // namespace

struct StacApi::Call
{
    const HttpRequest& request;
    const std::string root;
    ConnectionPool::Lease connection;
    Read read;
    const User user;
    const std::vector<Collection> collections;
    const AssetAddressesOf addresses;

    Call(const HttpRequest& asked, ConnectionPool& pool, const Addresses& addressesFor)
        : request(asked),
          root(asked.base + kPath),
          connection(pool),
          read(*connection),
          user(asked.user.value()),
          collections(readableCollections(*connection, user)),
          addresses(addressesFor(asked))
    {
    }

    ItemPage find(const ItemSearch& search, const std::vector<Collection>& among)
    {
        return Items(*connection, user, root, addresses).find(search, among);
    }
};

StacApi::StacApi(ConnectionPool& pool, Addresses addresses) : m_Pool(pool), m_Addresses(std::move(addresses))
{
}

std::vector<HttpRoute> StacApi::routes()
{
    const auto callers = HttpRoute::Callers::Anyone;
    const std::string path = kPath;
    return {{path, "stac", this},
            {path + "/search", "stac-search", this, HttpRoute::Callers::Users, {"GET", "POST"}},
            {path + "/conformance", "stac-conformance", this, callers},
            {path + "/api", "stac-api", this, callers},
            {path + "/api.html", "stac-api-page", this, callers}};
}

HttpResponse StacApi::handle(const HttpRequest& request)
{
    return answer(request, {request.segments.begin() + 1, request.segments.end()});
}

HttpResponse StacApi::answer(const HttpRequest& request, const std::vector<std::string>& path)
{
    const std::string first = path.empty() ? "" : path[0];
    const std::string root = request.base + kPath;
    if (path.size() == 1 && first == "conformance")
        return documentResponse(conformance());
    if (path.size() == 1 && first == "api")
        return HttpResponse::document("application/vnd.oai.openapi+json;version=3.0", apiDescription(root));
    if (path.size() == 1 && first == "api.html")
        return HttpResponse::document("text/html; charset=utf-8", apiPage());
    if (path.size() == 1 && first == "queryables")
        return documentResponse(queryables(root + "/queryables"), kSchemaJson);
    Call call(request, m_Pool, m_Addresses);
    if (path.empty())
        return documentResponse(landingPage(call.collections, root));
    if (path.size() == 1 && first == "search")
        return search(call);
    if (first == "collections")
        return collection(call, path);
    throw notFound("resource of that path");
}

json StacApi::documentOf(Call& call, const Collection& collection)
{
    return collectionDocument(collection, m_Extents.of(*call.connection, collection), call.root);
}

HttpResponse StacApi::collection(Call& call, const std::vector<std::string>& path)
{
    if (path.size() == 1) {
        json documents = json::array();
        for (const Collection& each : call.collections)
            documents.push_back(documentOf(call, each));
        return documentResponse({{"collections", std::move(documents)},
                                 {"links",
                                  {linkTo("self", call.root + "/collections", kJson),
                                   linkTo("root", call.root, kJson), linkTo("parent", call.root, kJson)}}});
    }
    const auto found = std::find_if(call.collections.begin(), call.collections.end(),
                                    [&path](const Collection& each) { return each.id() == path[1]; });
    if (found == call.collections.end())
        throw notFound("collection '" + abbreviated(path[1]) + "'");
    if (path.size() == 2)
        return documentResponse(documentOf(call, *found));
    if (path.size() == 3 && path[2] == "items")
        return itemsOf(call, *found);
    if (path.size() == 3 && path[2] == "queryables")
        return documentResponse(queryables(call.request.base + call.request.path), kSchemaJson);
    if (path.size() == 4 && path[2] == "items")
        return item(call, *found, path[3]);
    throw notFound("resource of that path");
}

HttpResponse StacApi::search(Call& call)
{
    const bool isPost = call.request.method == "POST";
    json body = isPost ? parsedBody(call.request) : json();
    const ItemPage page =
        call.find(isPost ? searchOfBody(body) : searchOfQuery(call.request), call.collections);
    const std::string self = call.request.base + call.request.path;
    json links = {linkTo("root", call.root, kJson),
                  linkTo("self", isPost ? self : addressWith(call.request, ""), kGeoJson)};
    if (page.last && isPost) {
        body["token"] = pageToken(*page.last);
        json next = linkTo("next", self, kGeoJson);
        next.update({{"method", "POST"}, {"body", std::move(body)}, {"merge", false}});
        links.push_back(std::move(next));
    } else if (page.last) {
        links.push_back(linkTo("next", addressWith(call.request, pageToken(*page.last)), kGeoJson));
    }
    return pageResponse(page, links);
}

HttpResponse StacApi::itemsOf(Call& call, const Collection& collection)
{
    const ItemPage page = call.find(searchOfQuery(call.request), {collection});
    const std::string parent = call.root + "/collections/" + collection.id();
    json links = {linkTo("root", call.root, kJson), linkTo("self", addressWith(call.request, ""), kGeoJson),
                  linkTo("collection", parent, kJson), linkTo("parent", parent, kJson)};
    if (page.last)
        links.push_back(linkTo("next", addressWith(call.request, pageToken(*page.last)), kGeoJson));
    return pageResponse(page, links);
}

HttpResponse StacApi::item(Call& call, const Collection& collection, const std::string& id)
{
    ItemSearch search;
    search.ids = {id};
    ItemPage page = call.find(search, {collection});
    if (page.items.empty())
        throw notFound("item '" + abbreviated(id) + "' in the collection " + collection.id());
    return HttpResponse::document(kGeoJson, std::move(page.items.front()));
}

} // namespace centre
