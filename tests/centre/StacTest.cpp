// The STAC API as its clients see it: which items a search finds, pages, rights and refusals. Whether the
// documents are valid STAC is for other clients to judge.

#include "centre/http/Http.h"
#include "centre/stac/StacApi.h"
#include "centre/store/Accounts.h"
#include "tests/centre/CentreSupport.h"

#include <nlohmann/json.hpp>

#include <set>

namespace {

using nlohmann::json;

// Records of types 1 and 2 of project A, of type 3 of project B, and of type 4, of another company.
constexpr char kRecords[] =
    R"({"kind":"project","projectID":1,"projectName":"A","company":"LUMO"}
{"kind":"project","projectID":2,"projectName":"B","company":"LUMO"}
{"kind":"project","projectID":3,"projectName":"A","company":"OTHER"}
{"kind":"type","typeID":1,"projectID":1,"dataType":"卫星影像"}
{"kind":"type","typeID":2,"projectID":1,"dataType":"DOM"}
{"kind":"type","typeID":3,"projectID":2,"dataType":"卫星影像"}
{"kind":"type","typeID":4,"projectID":3,"dataType":"卫星影像"}
{"kind":"sat","imageID":1,"typeID":1,"imageName":"景 \"1\"","value1":2.5,"sensor":"PMS-1","date":"2026-01-31","west":10,"south":40,"east":12,"north":42,"mainFileID":1}
{"kind":"sat","imageID":2,"typeID":1,"imageName":"b","value1":"n/a","sensor":"O'S","date":"2026-03-01","west":179,"south":-10,"east":-178.5,"north":-8}
{"kind":"sat","imageID":3,"typeID":1,"imageName":"c"}
{"kind":"dom","imageID":1,"typeID":2,"imageName":"d","sensor":"PMS-1","date":"2025-12-31","west":11,"south":41,"east":13,"north":43}
{"kind":"sat","imageID":4,"typeID":3,"imageName":"e","sensor":"PMS-2","date":"2026-01-31","west":-70,"south":-40,"east":-69,"north":-39}
{"kind":"sat","imageID":5,"typeID":4,"imageName":"f","sensor":"PMS-1","date":"2026-01-31","west":10,"south":40,"east":12,"north":42,"mainFileID":1}
)";

class Stac : public CentreTest
{
protected:
    Stac()
    {
        m_Store.addCompany("OTHER");
        m_Store.addBox("B1", "127.0.0.1:1");
        for (const char* name : {"scene.tif", "scene.tif.ovr", "scene.xml", "scenery.txt"})
            m_Data.makeFile(std::string("disk/") + name, "1234");
        import("disk", "disk", "LUMO", "B1");
        load(kRecords);
        m_Pool = std::make_unique<centre::ConnectionPool>(m_Data.path());
        m_Api = std::make_unique<centre::StacApi>(*m_Pool, [](const centre::HttpRequest&) {
            return [](const centre::AssetFile& file) {
                return centre::AssetAddresses{"http://" + file.box.value() + "/" + file.name, {}};
            };
        });
    }

    json answer(centre::HttpRequest request, const std::string& token)
    {
        std::string reason;
        request.base = "http://centre";
        request.user = centre::ConnectionPool::Lease(*m_Pool)->user(token, reason);
        for (std::size_t start = 1, end = 0; start < request.path.size(); start = end + 1) {
            end = std::min(request.path.find('/', start), request.path.size());
            request.segments.push_back(request.path.substr(start, end - start));
        }
        try {
            return json::parse(m_Api->handle(request).body);
        } catch (const centre::HttpError& error) {
            return error.status();
        }
    }

    json get(const std::string& path, std::vector<std::pair<std::string, std::string>> query = {})
    {
        centre::HttpRequest request;
        request.method = "GET";
        request.path = "/stac" + path;
        request.query = std::move(query);
        return answer(request, m_Token);
    }

    json post(const std::string& body)
    {
        centre::HttpRequest request;
        request.method = "POST";
        request.path = "/stac/search";
        request.body = body;
        return answer(request, m_Token);
    }

    std::string m_Token = m_Data.token();
    std::unique_ptr<centre::ConnectionPool> m_Pool;
    std::unique_ptr<centre::StacApi> m_Api;
};

std::string idsOf(const json& page)
{
    if (!page.is_object())
        return page.dump();
    std::string ids;
    for (const json& item : page["features"])
        ids += (ids.empty() ? "" : " ") + item["id"].get<std::string>();
    return ids;
}

TEST_F(Stac, ASearchFindsTheItemsThatMatchAllConditions)
{
    struct Case
    {
        std::vector<std::pair<std::string, std::string>> query;
        const char* ids; ///< or the status of a refusal
    };
    const std::vector<Case> cases = {
        {{}, "sat-1 sat-2 sat-3 dom-1 sat-4"},
        {{{"bbox", "9,39,10,40"}}, "sat-1"},
        {{{"bbox", "9,39,-5,11,41.5,5"}}, "sat-1 dom-1"},
        {{{"bbox", "178,-9,179.5,0"}}, "sat-2"},
        {{{"bbox", "-179,-9,-178.6,0"}}, "sat-2"},
        {{{"bbox", "170,-90,-60,90"}}, "sat-2 sat-4"},
        {{{"bbox", "-180,-90,180,90"}}, "sat-1 sat-2 dom-1 sat-4"},
        {{{"intersects", R"({"type":"Polygon","coordinates":[[[9,39],[10.5,39],[10.5,41],[9,39]]]})"}},
         "sat-1"},
        {{{"datetime", "2026-01-31T12:00:00Z"}}, "sat-1 sat-4"},
        {{{"datetime", "2026-02-01T01:00:00+02:00"}}, "sat-1 sat-4"},
        {{{"datetime", "../2026-01-30T23:59:59Z"}}, "dom-1"},
        {{{"datetime", "2026-02-01T00:00:00.5z/.."}}, "sat-2"},
        {{{"collections", "type-2,type-3,type-4,type-9"}}, "dom-1 sat-4"},
        {{{"ids", "sat-1,dom-1,sat-5,sat-03,dem-1,x"}}, "sat-1 dom-1"},
        {{{"query", R"({"sensor":{"eq":"PMS-1"}})"}}, "sat-1 dom-1"},
        {{{"query", R"({"project":{"neq":"A"},"datetime":{"gte":"2026-01-31T00:00:00Z"}})"}}, "sat-4"},
        {{{"filter", "sensor = 'O''S'"}}, "sat-2"},
        {{{"filter", "project = 'A' AND NOT (sensor IN ('PMS-1', 'x') OR collection = 'type-2')"}}, "sat-2"},
        {{{"filter", "sensor IS NULL and \"id\" <> 'sat-9'"}}, "sat-3"},
        {{{"filter", "datetime > TIMESTAMP('2026-01-30T00:00:00Z') AND datetime < DATE('2026-02-01')"}},
         "sat-1 sat-4"},
        {{{"filter", R"({"op":"=","args":[{"property":"id"},"sat-4"]})"}, {"filter-lang", "cql2-json"}},
         "sat-4"},
        {{{"bbox", "9,39,11,41"}, {"filter", "sensor = 'PMS-1'"}, {"datetime", "2026-01-01T00:00:00Z/.."}},
         "sat-1"},
        {{{"bbox", "1,2,3"}}, "400"},
        {{{"bbox", "1,9,3,4"}}, "400"},
        {{{"bbox", "1,2,3,nan"}}, "400"},
        {{{"bbox", "1,2,3,4"}, {"intersects", R"({"type":"Point","coordinates":[1,2]})"}}, "400"},
        {{{"intersects", R"({"type":"Point","coordinates":[[[[[1]]]]]})"}}, "400"},
        {{{"datetime", "2026-02-30T00:00:00Z"}}, "400"},
        {{{"datetime", "2026-02-01"}}, "400"},
        {{{"datetime", "../.."}}, "400"},
        {{{"datetime", "2026-02-02T00:00:00Z/2026-02-01T00:00:00Z"}}, "400"},
        {{{"limit", "0"}}, "400"},
        {{{"limit", "ten"}}, "400"},
        {{{"token", "next"}}, "400"},
        {{{"filter", "sensor = 'PMS"}}, "400"},
        {{{"filter", "sensor = 'a' OR"}}, "400"},
        {{{"filter", "west > '1'"}}, "400"},
        {{{"filter", std::string(10000, '(')}}, "400"},
        {{{"query", R"({"sensor":{"like":"PMS"}})"}}, "400"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(idsOf(get("/search", each.query)), each.ids) << json(each.query);
    EXPECT_EQ(idsOf(post(R"({"bbox":[9,39,11,41.5],"limit":50,"query":{"sensor":{"in":["PMS-1"]}},
                             "filter":{"op":"not","args":[{"op":"isNull","args":[{"property":"project"}]}]}})")),
              "sat-1 dom-1");
    for (const char* body : {"[]", "{", R"({"ids":"sat-1"})", R"({"limit":"1"})", R"({"bbox":["1",2,3,4]})",
                             R"({"filter":{"op":"="}})", R"({"intersects":{}})"})
        EXPECT_EQ(post(body), 400) << body;
}

TEST_F(Stac, AnItemHasWhatItsRecordHas)
{
    const json item = get("/collections/type-1/items/sat-1");
    EXPECT_EQ(item["bbox"], json::parse("[10.0,40.0,12.0,42.0]"));
    EXPECT_EQ(item["properties"]["title"], "景 \"1\"");
    EXPECT_EQ(item["properties"]["lumo:value1"], 2.5);
    EXPECT_EQ(item["properties"]["instruments"], json::array({"PMS-1"}));
    EXPECT_EQ(item["properties"]["datetime"], "2026-01-31T00:00:00Z");
    EXPECT_EQ(item["assets"].size(), 3U);
    EXPECT_EQ(item["assets"]["data"]["href"], "http://B1/scene.tif");
    EXPECT_EQ(item["assets"]["data"]["file:size"], 4);
    EXPECT_EQ(item["assets"]["scene.tif.ovr"]["roles"], json::array({"overview"}));
    EXPECT_EQ(item["assets"]["scene.xml"]["roles"], json::array({"metadata"}));
    EXPECT_EQ(item, get("/search", {{"ids", "sat-1"}})["features"][0]);

    const json crossing = get("/collections/type-1/items/sat-2");
    EXPECT_EQ(crossing["bbox"], json::parse("[179.0,-10.0,-178.5,-8.0]"));
    EXPECT_EQ(crossing["geometry"]["coordinates"][1][0][0], json::parse("[-180,-10.0]"));
    EXPECT_EQ(crossing["properties"]["lumo:value1"], "n/a");
    const json bare = get("/collections/type-1/items/sat-3");
    EXPECT_TRUE(bare["geometry"].is_null() && bare["properties"]["datetime"].is_null());
    EXPECT_FALSE(bare.contains("bbox"));

    const json collection = get("/collections/type-1");
    EXPECT_EQ(collection["extent"]["spatial"]["bbox"][0], json::parse("[-180.0,-10.0,180.0,42.0]"));
    EXPECT_EQ(collection["extent"]["temporal"]["interval"][0],
              json({"2026-01-31T00:00:00Z", "2026-03-01T23:59:59Z"}));
    EXPECT_EQ(collection["summaries"]["sensor"], json({"O'S", "PMS-1"}));
}

TEST_F(Stac, PagesHaveEachItemOnceWhileRecordsAreRegistered)
{
    for (const bool isPost : {false, true}) {
        std::multiset<std::string> ids;
        json body = {{"limit", 2}};
        json page = isPost ? post(body.dump()) : get("/search", {{"limit", "2"}});
        for (int pages = 1;; ++pages) {
            ASSERT_LT(pages, 20);
            for (const json& item : page["features"])
                ids.insert(item["id"].get<std::string>());
            if (pages < 4)
                load(R"({"kind":"sat","typeID":1}
{"kind":"dom","typeID":2})");
            awaitChanges();
            const json link = page["links"].back();
            if (link["rel"] != "next")
                break;
            if (isPost) {
                EXPECT_EQ(link["body"]["limit"], 2);
                page = post(link["body"].dump());
            } else {
                const std::string address = link["href"];
                page =
                    get("/search", {{"limit", "2"}, {"token", address.substr(address.find("token=") + 6)}});
            }
        }
        for (const char* id : {"sat-1", "sat-2", "sat-3", "dom-1", "sat-4"})
            EXPECT_EQ(ids.count(id), 1U) << id;
        EXPECT_EQ(std::set<std::string>(ids.begin(), ids.end()).size(), ids.size());
    }
}

TEST_F(Stac, WhatAnotherCompanyOwnsIsNotFoundUnlessItIsShared)
{
    EXPECT_EQ(get("/collections/type-4"), 404);
    EXPECT_EQ(get("/collections/type-4/items/sat-5"), 404);
    EXPECT_EQ(get("/collections/type-1/items/sat-5"), 404);
    EXPECT_EQ(get("/collections/type-1/items/sat-4"), 404) << "an item of another collection";
    EXPECT_EQ(get("/nothing"), 404);
    m_Token = m_Store.addUser("other", "OTHER", false);
    EXPECT_EQ(idsOf(get("/search")), "sat-5");
    EXPECT_EQ(get("/collections")["collections"].size(), 1U);
    EXPECT_TRUE(get("/collections/type-4/items/sat-5")["assets"].empty()) << "the file is another company's";

    centre::Accounts(m_Store.database()).share(centre::Accounts::Shared::Project, "A", "LUMO", "OTHER");
    awaitChanges();
    EXPECT_EQ(idsOf(get("/search", {{"query", R"({"project":{"eq":"A"}})"}})),
              "sat-1 sat-2 sat-3 dom-1 sat-5");
    EXPECT_TRUE(get("/collections/type-1/items/sat-1")["assets"].empty());
    centre::Accounts(m_Store.database()).share(centre::Accounts::Shared::Disk, "disk", "LUMO", "OTHER");
    awaitChanges();
    EXPECT_EQ(get("/collections/type-1/items/sat-1")["assets"].size(), 3U);
}

} // namespace
