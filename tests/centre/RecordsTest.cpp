#include "centre/content/Sample.h"
#include "centre/store/RecordKinds.h"
#include "tests/centre/CentreSupport.h"

#include <algorithm>
#include <functional>
#include <iterator>

using centre::ExitCode;
using centre::RecordKind;
using google::protobuf::FieldDescriptor;

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

/// A record with one text, or with the name of each in it, in all its fields that take one; or without texts.
struct Sample
{
    enum class Texts
    {
        Named,
        Absent,
        Empty
    };

    Sample(const RecordKind& kind, int id, Texts texts, const std::string& marks)
        : line("{\"kind\":\"" + kind.name + "\"")
    {
        std::map<int, std::string> fields; // by their places
        const auto add = [&](const std::string& column, const std::string& key, const std::string& value) {
            line += ",\"" + key + "\":" + value;
            if (const FieldDescriptor* field = kind.bean->FindFieldByName(column))
                fields[field->index()] = " " + column + ": " + value;
        };
        for (const centre::Column& column : kind.columns) {
            const FieldDescriptor* field = kind.bean->FindFieldByName(column.name);
            if (field && field->cpp_type() == FieldDescriptor::CPPTYPE_STRING && texts != Texts::Absent)
                add(column.name, column.key, texts == Texts::Empty ? "\"\"" : "\"" + column.key + " 值\"");
        }
        add(kind.idColumn(), kind.columns.front().key, std::to_string(id));
        if (kind.hasType())
            add("type_id", "typeID", std::to_string(kind.number));
        else
            add("dq_con_id", "dqConID", "1");
        if (kind.hasType() && texts == Texts::Named)
            add("main_file_id", "mainFileID", "1");
        line += ",\"marks\":[" + marks + "]}\n";
        for (const auto& [place, field] : fields)
            bean += field;
    }

    std::string line;
    std::string bean;
};

using Texts = Sample::Texts;

std::vector<Sample> samplesOf(const RecordKind& kind)
{
    return {{kind, 1, Texts::Named, "3,4"}, {kind, 2, Texts::Absent, "4"}, {kind, 3, Texts::Empty, ""}};
}

class Records : public CentreTest
{
};

TEST_F(Records, ComeBackAsTheyWereLoaded)
{
    m_Store.addMadeUpFiles(m_Store.addDisk("disk", "/srv", "LUMO"), 1);
    std::string lines = owners();
    for (const RecordKind& kind : centre::recordKinds())
        if (kind.hasType() || kind.name == "point")
            for (const Sample& sample : samplesOf(kind))
                lines += sample.line;
    load(lines);
    EXPECT_EQ(m_Loaded, "36 records (project 1, type 8, photo 3, sat 3, ads 3, control 3, point 3,"
                        " dem 3, dsm 3, dom 3, dlg 3)");
    serve();
    for (const RecordKind& kind : centre::recordKinds()) {
        if (!kind.hasType() && kind.name != "point")
            continue;
        const std::string query = "queryDataSrc" + kind.stem;
        const std::string owner = kind.hasType() ? "TypeID" : "DqConID";
        const std::string byOwner =
            kind.hasType() ? "type_id: " + std::to_string(kind.number) : "dqcon_id: 1";
        const std::vector<Sample> samples = samplesOf(kind);
        const auto list = [&](std::initializer_list<std::size_t> chosen) {
            std::string text = "result: 0";
            for (const std::size_t i : chosen)
                text += " " + findOperation(query + "By" + owner).output_type()->field(3)->name() + " {" +
                        samples[i].bean + " }";
            return text;
        };
        EXPECT_EQ(ask(query + "By" + owner + "Total", byOwner), "result: 0 total: 3");
        EXPECT_EQ(ask(query + "By" + owner + "Total", ""), "result: 0 total: 0");
        if (kind.name == "control") {
            EXPECT_EQ(ask("queryDataSrcControlByDqConID", "dqcon_id: 3"),
                      "result: 0 bean {" + samples[2].bean + " }");
            continue;
        }
        EXPECT_EQ(ask("searchDataByType" + kind.stem,
                      "type_id: " + std::to_string(kind.hasType() ? kind.number : 8)),
                  list({0, 1, 2}));
        EXPECT_EQ(ask(query + "ById", "record_id: 1"), "result: 0 bean {" + samples[0].bean + " }");
        EXPECT_EQ(ask(query + "ById", "record_id: 4"), "result: -1");
        EXPECT_EQ(ask(query + "By" + owner, byOwner + " page_size: 2"), list({0, 1}));
        EXPECT_EQ(ask(query + "By" + owner, byOwner + " page_start: 2 page_size: 2"), list({2}));
        if (!kind.hasType())
            continue;
        EXPECT_EQ(ask(query + "ByProjectIDTotal", "project_id: 1"), "result: 0 total: 3");
        EXPECT_EQ(ask(query + "ByProjectID", "project_id: 1 page_start: 1 page_size: 9"), list({1, 2}));
        EXPECT_EQ(ask(query + "ByProjectIDAndCommID", "project_id: 1 comm_id: 4"), list({0, 1}));
        EXPECT_EQ(ask(query + "ByProjectIDAndCommID", "project_id: 1 comm_id: 3"), list({0}));
        EXPECT_EQ(ask(query + "ByProjectIDAndCommID", "project_id: 2 comm_id: 3"), "result: -1");
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
        return store.database()
            .execAndGet("SELECT group_concat(quote(image_name) || quote(value1) || quote(west)) FROM sat")
            .getString();
    };
    const centre::RecordCounts counts = sample(m_Store, 1);
    std::uint64_t images = 0;
    for (const RecordKind& kind : centre::recordKinds()) {
        EXPECT_GT(counts.at(kind.name), 0u) << kind.name;
        images += kind.hasType() && kind.name != "control" ? counts.at(kind.name) : 0;
    }
    EXPECT_EQ(images, 3000u);
    EXPECT_EQ(
        value("SELECT min(count(value1), count(count1), count(datum), count(coord_param1)) * 1.2 > count(*)"
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
