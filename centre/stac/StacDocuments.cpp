#include "centre/stac/StacDocuments.h"

#include "centre/stac/EmbeddedFiles.h"

namespace centre {

namespace {

using nlohmann::json;

const json& conformanceClasses()
{
    static const json classes = {"https://api.stacspec.org/v1.0.0/core",
                                 "https://api.stacspec.org/v1.0.0/collections",
                                 "https://api.stacspec.org/v1.0.0/ogcapi-features",
                                 "https://api.stacspec.org/v1.0.0/item-search",
                                 "https://api.stacspec.org/v1.0.0/item-search#query",
                                 "https://api.stacspec.org/v1.0.0-rc.2/item-search#filter",
                                 "http://www.opengis.net/spec/ogcapi-features-1/1.0/conf/core",
                                 "http://www.opengis.net/spec/ogcapi-features-1/1.0/conf/oas30",
                                 "http://www.opengis.net/spec/ogcapi-features-1/1.0/conf/geojson",
                                 "http://www.opengis.net/spec/ogcapi-features-3/1.0/conf/filter",
                                 "http://www.opengis.net/spec/ogcapi-features-3/1.0/conf/features-filter",
                                 "http://www.opengis.net/spec/cql2/1.0/conf/cql2-text",
                                 "http://www.opengis.net/spec/cql2/1.0/conf/cql2-json"};
    return classes;
}

} // namespace

json landingPage(const std::vector<Collection>& collections, const std::string& root)
{
    json post = linkTo("search", root + "/search", kGeoJson, "item search");
    json get = post;
    get["method"] = "GET";
    post["method"] = "POST";
    json links = {linkTo("self", root, kJson),
                  linkTo("root", root, kJson),
                  linkTo("conformance", root + "/conformance", kJson),
                  linkTo("data", root + "/collections", kJson, "collections"),
                  std::move(get),
                  std::move(post),
                  linkTo("service-desc", root + "/api", "application/vnd.oai.openapi+json;version=3.0"),
                  linkTo("service-doc", root + "/api.html", "text/html"),
                  linkTo(kQueryables, root + "/queryables", kSchemaJson)};
    for (const Collection& collection : collections)
        links.push_back(linkTo("child", root + "/collections/" + collection.id(), kJson,
                               collection.project + " / " + collection.dataType));
    return {{"type", "Catalog"},
            {"stac_version", kStacVersion},
            {"id", "lumo-centre"},
            {"title", "Image catalogue"},
            {"description",
             "The images, products and control files that the caller may read: a collection for"
             " each class of data in a project."},
            {"conformsTo", conformanceClasses()},
            {"links", std::move(links)}};
}

json conformance()
{
    return {{"conformsTo", conformanceClasses()}};
}

json queryables(const std::string& self)
{
    const auto text = [](const char* title) { return json{{"title", title}, {"type", "string"}}; };
    return {
        {"$schema", "https://json-schema.org/draft/2019-09/schema"},
        {"$id", self},
        {"type", "object"},
        {"title", "Properties that filters may name"},
        {"properties",
         {{"id", text("the item's identifier")},
          {"collection", text("the collection's identifier")},
          {"project", text("the name of the project")},
          {"sensor", text("the name of the sensor")},
          {"datetime", {{"title", "the day, from its begin"}, {"type", "string"}, {"format", "date-time"}}}}},
        {"additionalProperties", false}};
}

std::string apiDescription(const std::string& root)
{
    static const json description = json::parse(stacFiles().at("openapi.json"));
    json document = description;
    document["servers"] = json::array({{{"url", root}}});
    return document.dump();
}

std::string apiPage()
{
    return std::string(stacFiles().at("api.html"));
}

} // namespace centre
