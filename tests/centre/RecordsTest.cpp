#include "centre/content/Sample.h"
#include "centre/store/RecordKinds.h"
#include "tests/centre/CentreSupport.h"

#include <algorithm>
#include <functional>
#include <iterator>

using centre::ExitCode;
using centre::RecordKind;

namespace {

/// One project and one type for each kind that types own, each with the kind's number as identifier.
std::string owners()
{
    std::string lines = R"({"kind":"project","projectID":1,"projectName":"P"})";
    for (const RecordKind& kind : centre::recordKinds())
        if (kind.hasType())
            lines += "\n{\"kind\":\"type\",\"projectID\":1,\"typeID\":" + std::to_string(kind.number) +
                     ",\"dataType\":\"" + kind.typeName + "\"}";
    return lines + "\n";
}

class Records : public CentreTest
{
};

TEST_F(Records, OfEachKindAreListedByTheirOwnersAndMarks)
{
    std::string lines = owners();
    for (const RecordKind& kind : centre::recordKinds())
        if (kind.hasType() || kind.name == "point")
            for (const char* marks : {"3,4", "4", ""})
                lines += "{\"kind\":\"" + kind.name + "\",\"marks\":[" + marks + "]," +
                         (kind.hasType() ? "\"typeID\":" + std::to_string(kind.number) : "\"dqConID\":1") +
                         "}\n";
    load(lines);
    EXPECT_EQ(m_Loaded, "36 records (project 1, type 8, photo 3, sat 3, ads 3, control 3, point 3,"
                        " dem 3, dsm 3, dom 3, dlg 3)");
    serve();
    for (const RecordKind& kind : centre::recordKinds()) {
        if (!kind.hasType() && kind.name != "point")
            continue;
        SCOPED_TRACE(kind.name);
        const auto found = [this](const std::string& operation, const std::string& request) {
            const std::string answer = ask(operation, request);
            return answer == "result: -1" ? answer : idsIn(answer);
        };
        const std::string query = "queryDataSrc" + kind.stem;
        const std::string byOwner = query + (kind.hasType() ? "ByTypeID" : "ByDqConID");
        const std::string owner = kind.hasType() ? "type_id: " + std::to_string(kind.number) : "dqcon_id: 1";
        EXPECT_EQ(ask(byOwner + "Total", owner), "result: 0 total: 3");
        EXPECT_EQ(ask(byOwner + "Total", ""), "result: 0 total: 0");
        if (kind.name == "control") {
            EXPECT_EQ(found("queryDataSrcControlByDqConID", "dqcon_id: 3"), "3");
            continue;
        }
        EXPECT_EQ(found("searchDataByType" + kind.stem,
                        "type_id: " + std::to_string(kind.hasType() ? kind.number : 8)),
                  "1 2 3");
        EXPECT_EQ(found(query + "ById", "record_id: 1"), "1");
        EXPECT_EQ(found(query + "ById", "record_id: 4"), "result: -1");
        EXPECT_EQ(found(byOwner, owner + " page_size: 2"), "1 2");
        EXPECT_EQ(found(byOwner, owner + " page_start: 2 page_size: 2"), "3");
        if (!kind.hasType())
            continue;
        EXPECT_EQ(ask(query + "ByProjectIDTotal", "project_id: 1"), "result: 0 total: 3");
        EXPECT_EQ(found(query + "ByProjectID", "project_id: 1 page_start: 1 page_size: 9"), "2 3");
        EXPECT_EQ(found(query + "ByProjectIDAndCommID", "project_id: 1 comm_id: 4"), "1 2");
        EXPECT_EQ(found(query + "ByProjectIDAndCommID", "project_id: 1 comm_id: 3"), "1");
        EXPECT_EQ(found(query + "ByProjectIDAndCommID", "project_id: 2 comm_id: 3"), "result: -1");
    }
}

TEST_F(Records, AreReadFromLinesOfUtf8UpToALength)
{
    const std::string longest(1 << 20, ' ');
    load(owners() + longest + "\n");
    expectError(ExitCode::Failed, "file:1: the line is longer than 1048576 bytes",
                [&] { load(longest + " "); });
    expectError(ExitCode::Failed, "not JSON", [&] { load("{\"kind\":\"sat\",\"text1\":\"\xff\"}"); });
}

TEST_F(Records, OfASampleAreThereInPagesAndTheSameForASeed)
{
    const auto sample = [](centre::Store& store, std::uint64_t seed) {
        return centre::addSample(store, "LUMO", 3000, seed, [](std::uint64_t) {});
    };
    const auto content = [](centre::Store& store) {
        const auto rows = store.database().prepare(
            "SELECT image_name || ',' || coalesce(value1, '-') || ',' || coalesce(west, 0) FROM sat"
            " ORDER BY image_id");
        std::string all;
        while (rows->step())
            all += rows->string(0) + ";";
        return all;
    };
    const centre::RecordCounts counts = sample(m_Store, 1);
    std::uint64_t images = 0;
    for (const RecordKind& kind : centre::recordKinds()) {
        EXPECT_GT(counts.at(kind.name), 0u) << kind.name;
        images += kind.hasType() && kind.name != "control" ? counts.at(kind.name) : 0;
    }
    EXPECT_EQ(images, 3000u);
    EXPECT_EQ(value("SELECT CASE WHEN count(value1) * 1.2 > count(*) AND count(count1) * 1.2 > count(*)"
                    " AND count(datum) * 1.2 > count(*) AND count(coord_param1) * 1.2 > count(*) THEN 1 END"
                    " FROM sat"),
              "1");
    for (const std::uint64_t seed : {1, 2}) {
        DataFolder again;
        centre::Store store(again.path());
        EXPECT_EQ(sample(store, seed) == counts && content(store) == content(m_Store), seed == 1);
    }
    expectError(ExitCode::Failed, "already", [&] { sample(m_Store, 1); });

    serve();
    for (const auto& [query, owner] :
         {std::pair("queryDataSrcSatByTypeID", "type_id: 2"), // the first project's
          {"queryDataSrcSatByProjectID", "project_id: 1"}}) {
        std::vector<int> ids;
        for (std::size_t before = 1; before != ids.size();) {
            before = ids.size();
            std::istringstream page(idsIn(
                ask(query, std::string(owner) + " page_size: 500 page_start: " + std::to_string(before))));
            ids.insert(ids.end(), std::istream_iterator<int>(page), {});
        }
        EXPECT_GT(ids.size(), 1000u);
        EXPECT_EQ(ask(std::string(query) + "Total", owner), "result: 0 total: " + std::to_string(ids.size()));
        EXPECT_TRUE(std::adjacent_find(ids.begin(), ids.end(), std::greater_equal<>()) == ids.end());
    }
}

} // namespace
