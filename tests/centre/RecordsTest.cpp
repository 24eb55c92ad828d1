#include "centre/content/LoadRecords.h"
#include "centre/content/Sample.h"
#include "centre/store/RecordKinds.h"
#include "tests/centre/CentreSupport.h"

#include <algorithm>
#include <array>
#include <functional>
#include <sstream>

using centre::ExitCode;
using centre::RecordKind;
using google::protobuf::FieldDescriptor;

namespace {

std::string operation(const RecordKind& kind, const std::string& rest)
{
    return "queryDataSrc" + kind.stem + rest;
}

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
protected:
    /// The identifiers that the beans of an answer begin with.
    std::vector<int> idsOf(const std::string& name, const std::string& request)
    {
        std::istringstream words(ask(name, request));
        std::vector<int> ids;
        for (std::string before, word; words >> word; before = word)
            if (before == "image_id:" || before == "point_id:" || before == "type_id:")
                ids.push_back(std::stoi(word));
        return ids;
    }
};

TEST(RecordKind, KeysAreTheNamesOfTheRecordsFields)
{
    std::map<std::string, std::string> keys;
    for (const RecordKind& kind : centre::recordKinds())
        for (const centre::Column& column : kind.columns)
            keys[column.name] = column.key;
    for (const auto& [name, key] : {std::pair("image_name", "imageName"),
                                    {"main_file_id", "mainFileID"},
                                    {"dq_con_id", "dqConID"},
                                    {"coord_param1", "coordParam1"},
                                    {"text16", "text16"},
                                    {"ctrl_file_name", "ctrlFileName"},
                                    {"point_x", "pointX"},
                                    {"con_number", "conNumber"},
                                    {"company_id", "companyID"},
                                    {"type_text", "typeText"},
                                    {"hemisphere", "hemisphere"}})
        EXPECT_EQ(keys[name], key);
}

/// The record 1 with a text of its own in every field, record 2 with what is required alone, record 3 with
/// texts that are there and empty; the beans that are to come of them.
struct ThreeRecords
{
    explicit ThreeRecords(const RecordKind& kind)
    {
        std::string full;
        std::string empty;
        for (const centre::Column& column : kind.columns) {
            const FieldDescriptor* field = kind.bean->FindFieldByName(column.name);
            if (!field || field->cpp_type() != FieldDescriptor::CPPTYPE_STRING)
                continue;
            const std::string value = column.key + " 值";
            full += ",\"" + column.key + "\":\"" + value + "\"";
            empty += ",\"" + column.key + "\":\"\"";
            fields[field->index()] = field->name() + ": \"" + value + "\"";
            emptyFields[field->index()] = field->name() + ": \"\"";
        }
        const std::string owner =
            kind.hasType() ? ",\"typeID\":" + std::to_string(kind.number) : std::string(",\"dqConID\":1");
        const std::string begin = "{\"kind\":\"" + kind.name + "\"" + owner;
        const std::string file = kind.hasType() ? ",\"mainFileID\":\"1\"" : "";
        lines = begin + file + full + ",\"marks\":[3,4]}\n" + begin + ",\"" + kind.columns.front().key +
                "\":2,\"marks\":[4]}\n" + begin + empty + "}\n";
        const std::string second = kind.hasType() ? "" : " dq_con_id: 1";
        const std::string id = kind.idColumn() + ": ";
        beans = {id + "1" + (kind.hasType() ? " main_file_id: 1" : second) + joined(fields),
                 id + "2" + second, id + "3" + second + joined(emptyFields)};
    }

    static std::string joined(const std::map<int, std::string>& fields)
    {
        std::string text;
        for (const auto& [place, field] : fields)
            text += " " + field;
        return text;
    }

    std::map<int, std::string> fields;
    std::map<int, std::string> emptyFields;
    std::string lines;
    std::vector<std::string> beans;
};

TEST_F(Records, ComeBackAsTheyWereLoaded)
{
    m_Store.addMadeUpFiles(m_Store.addDisk("disk", "/srv", "LUMO"), 1);
    std::string lines = owners();
    for (const RecordKind& kind : centre::recordKinds())
        if (kind.hasType() || kind.name == "point")
            lines += ThreeRecords(kind).lines;
    load(lines);
    EXPECT_EQ(m_Loaded, "1 project, 8 type, 3 photo, 3 sat, 3 ads, 3 control, 3 point,"
                        " 3 dem, 3 dsm, 3 dom, 3 dlg");
    serve();
    for (const RecordKind& kind : centre::recordKinds()) {
        if (!kind.hasType() && kind.name != "point")
            continue;
        const std::vector<std::string> beans = ThreeRecords(kind).beans;
        const auto list = [&kind, &beans](std::initializer_list<std::size_t> chosen) {
            const auto& response =
                *findOperation(operation(kind, kind.hasType() ? "ByTypeID" : "ByDqConID")).output_type();
            std::string text = "result: 0";
            for (const std::size_t i : chosen)
                text += " " + response.field(3)->name() + " { " + beans[i] + " }";
            return text;
        };
        const bool byDqConId = kind.name == "control";
        if (!byDqConId) {
            EXPECT_EQ(ask("searchDataByType" + kind.stem,
                          "type_id: " + std::to_string(kind.hasType() ? kind.number : 8)),
                      list({0, 1, 2}));
            EXPECT_EQ(ask(operation(kind, "ById"), "record_id: 1"), "result: 0 bean { " + beans[0] + " }");
            EXPECT_EQ(ask(operation(kind, "ById"), "record_id: 4"), "result: -1");
        }
        const std::string owner = kind.hasType() ? "TypeID" : "DqConID";
        const std::string byOwner =
            kind.hasType() ? "type_id: " + std::to_string(kind.number) : std::string("dqcon_id: 1");
        EXPECT_EQ(ask(operation(kind, "By" + owner + "Total"), byOwner), "result: 0 total: 3");
        EXPECT_EQ(ask(operation(kind, "By" + owner + "Total"), ""), "result: 0 total: 0");
        if (byDqConId) {
            EXPECT_EQ(ask("queryDataSrcControlByDqConID", "dqcon_id: 3"),
                      "result: 0 bean { " + beans[2] + " }");
            continue;
        }
        EXPECT_EQ(ask(operation(kind, "By" + owner), byOwner + " page_size: 2"), list({0, 1}));
        EXPECT_EQ(ask(operation(kind, "By" + owner), byOwner + " page_start: 2 page_size: 2"), list({2}));
        if (!kind.hasType())
            continue;
        EXPECT_EQ(ask(operation(kind, "ByProjectIDTotal"), "project_id: 1"), "result: 0 total: 3");
        EXPECT_EQ(ask(operation(kind, "ByProjectID"), "project_id: 1 page_start: 1 page_size: 9"),
                  list({1, 2}));
        const std::string byMark = operation(kind, "ByProjectIDAndCommID");
        EXPECT_EQ(ask(byMark, "project_id: 1 comm_id: 4"), list({0, 1}));
        EXPECT_EQ(ask(byMark, "project_id: 1 comm_id: 3"), list({0}));
        EXPECT_EQ(ask(byMark, "project_id: 2 comm_id: 3"), "result: -1");
    }
}

TEST_F(Records, AreFoundByCondition)
{
    load(R"({"kind":"project","projectName":"P"}
{"kind":"project","projectName":"Q"}
{"kind":"type","projectID":1,"dataType":"卫星影像"}
{"kind":"type","projectID":1,"dataType":"Dem"}
{"kind":"type","projectID":2,"dataType":"卫星影像"}
{"kind":"type","projectID":2,"dataType":"控制点属性"}
{"kind":"sat","typeID":1,"sensor":"S","date":"2020-01-31","west":10,"south":20,"east":11,"north":21}
{"kind":"sat","typeID":1,"sensor":"S","date":"20200201","west":179,"south":-10,"east":-179,"north":-9}
{"kind":"sat","typeID":1,"sensor":"s","date":"2020/02/02","west":-180,"south":-90,"east":180,"north":-80}
{"kind":"sat","typeID":1}
{"kind":"sat","typeID":3,"sensor":"S","date":"2021-01-01","west":-170.5,"south":20,"east":-170.1,"north":20}
{"kind":"dem","typeID":2,"date":"2022-01-01"}
{"kind":"control","typeID":4,"date":"2023-01-01","sensor":"K","west":0,"south":0,"east":1,"north":1}
{"kind":"control","typeID":4}
{"kind":"point","dqConID":2}
{"kind":"point","dqConID":1}
{"kind":"point","dqConID":1})");
    serve();
    const auto bounds = [](const std::string& numbers) {
        std::istringstream words(numbers);
        std::string text = "use_bounds: true";
        std::string number;
        for (char name = 'a'; words >> number; ++name)
            text += std::string(" bound_") + name + ": " + number;
        return text;
    };
    using Ids = std::vector<int>;
    const struct
    {
        std::string condition;
        Ids sats;   ///< of type 1
        Ids points; ///< of type 4
        Ids types;
    } cases[] = {
        {"", {1, 2, 3, 4}, {1, 2, 3}, {1, 2, 3, 4}},
        {"sentype: '' start_date: '' end_date: '' proname: '' data_type: ''",
         {1, 2, 3, 4},
         {1, 2, 3},
         {1, 2, 3, 4}},
        {"sentype: 'S'", {1, 2}, {}, {1, 3}},
        {"sentype: 's'", {3}, {}, {1}},
        {"sentype: 'K'", {}, {2, 3}, {4}},
        {"start_date: '2020-02-01'", {2, 3}, {2, 3}, {1, 2, 3, 4}},
        {"end_date: '20200201'", {1, 2}, {}, {1}},
        {"start_date: '2020/02/01' end_date: '2020-02-01'", {2}, {}, {1}},
        {"start_date: '2020-02-02' end_date: '2020-02-01'", {}, {}, {}},
        {"sentype: 'S' start_date: '2020-02-01'", {2}, {}, {1, 3}},
        {"start_date: '2022-06-01' sentype: 'K'", {}, {2, 3}, {4}},
        {bounds("11 21 12 22"), {1}, {}, {1}},
        {bounds("11.00001 20 12 22"), {}, {}, {}}, // beyond what the index can tell apart
        {bounds("10.5 20.5 10.5 20.5"), {1}, {}, {1}},
        {bounds("-180 -90 180 90"), {1, 2, 3}, {2, 3}, {1, 3, 4}},
        {bounds("-inf -inf inf inf"), {1, 2, 3}, {2, 3}, {1, 3, 4}},
        {bounds("-179.5 -10 -179 -9"), {2}, {}, {1}},
        {bounds("179.5 -9.5 179.6 -9.5"), {2}, {}, {1}},
        {bounds("170 -20 -170 30"), {2}, {}, {1, 3}}, // across the date line
        {bounds("181 -10 190 30"), {2}, {}, {1, 3}},  // longitudes from 0 to 360
        {bounds("-20 -85 -10 -84"), {3}, {}, {1}},
        {bounds("0 0 30 30") + " sentype: 'S' end_date: '2020-01-31'", {1}, {}, {1}},
        {bounds("0 0 30 30") + " sentype: 's'", {}, {}, {}},
        {"bound_a: 5 bound_b: 9 bound_c: 5 bound_d: 1 use_bounds: false",
         {1, 2, 3, 4},
         {1, 2, 3},
         {1, 2, 3, 4}},
        {"proname: 'P'", {1, 2, 3, 4}, {}, {1, 2}},
        {"proname: 'Q' sentype: 'S'", {}, {}, {3}},
        {"proname: 'p'", {}, {}, {}},
        {"data_type: 'DEM'", {}, {}, {2}},
        {"data_type: '卫星影像' proname: 'P'", {1, 2, 3, 4}, {}, {1}},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(idsOf("searchDataByTypeSat", "type_id: 1 " + each.condition), each.sats) << each.condition;
        EXPECT_EQ(idsOf("searchDataByTypeControlInfo", "type_id: 4 " + each.condition), each.points)
            << each.condition;
        EXPECT_EQ(idsOf("searchDataType", "company_id: 1 " + each.condition), each.types) << each.condition;
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
    constexpr std::uint32_t kImages = 3000;
    const auto sample = [](centre::Store& store, std::uint64_t seed) {
        return centre::addSample(store, "LUMO", kImages, seed, [](std::uint64_t) {});
    };
    const centre::RecordCounts counts = sample(m_Store, 1);
    const std::string content =
        "SELECT group_concat(quote(image_name) || quote(value1) || quote(west)) FROM sat";
    const std::string drawn = m_Store.database().execAndGet(content).getString();
    std::uint64_t images = 0;
    for (const RecordKind& kind : centre::recordKinds()) {
        EXPECT_GT(counts.at(kind.name), 0u) << kind.name;
        images += kind.hasType() && kind.name != "control" ? counts.at(kind.name) : 0;
    }
    EXPECT_EQ(images, kImages);
    for (const std::uint64_t seed : {1, 2}) {
        DataFolder again;
        centre::Store store(again.path());
        EXPECT_EQ(sample(store, seed) == counts && store.database().execAndGet(content).getString() == drawn,
                  seed == 1);
    }
    expectError(ExitCode::Failed, "already", [&] { sample(m_Store, 1); });

    serve();
    for (const std::string owner : {"Type", "Project"}) {
        const std::string id = owner == "Type" ? "type_id: 2" : "project_id: 1"; // the first project's sat
        const std::string total = ask("queryDataSrcSatBy" + owner + "IDTotal", id);
        std::vector<int> ids;
        for (std::size_t received = 1; received > 0;) {
            const auto page = idsOf("queryDataSrcSatBy" + owner + "ID",
                                    id + " page_size: 500 page_start: " + std::to_string(ids.size()));
            received = page.size();
            ids.insert(ids.end(), page.begin(), page.end());
        }
        EXPECT_GT(ids.size(), 1000u);
        EXPECT_EQ(total, "result: 0 total: " + std::to_string(ids.size()));
        EXPECT_TRUE(std::adjacent_find(ids.begin(), ids.end(), std::greater_equal<>()) == ids.end());
    }
}

TEST_F(Records, AreLoadedByTheProgram)
{
    const std::string lines = m_Data.below("lines");
    std::ofstream(lines) << owners() << R"({"kind":"dlg","typeID":13})";
    const struct
    {
        std::vector<std::string> arguments;
        int exitCode;
        std::string told;
    } cases[] = {
        {{"load", m_Data.path(), lines}, 0, "lines: 1 project, 8 type, 1 dlg; "},
        {{"load", m_Data.path(), lines}, 1, "lines:1: there is a project 1 already"},
        {{"load", m_Data.path(), lines + "0"}, 1, "No such file"},
        {{"load", m_Data.path(), "-"}, 0, "loaded standard input: nothing; "},
        {{"sample", m_Data.path(), "--images", "20", "--seed", "7"},
         0,
         "made a sample: 6 project, 48 type, "},
        {{"sample", m_Data.path(), "--images", "-1"}, 2, "--images"},
    };
    for (const auto& each : cases) {
        const Outcome outcome = run(centreCommand(each.arguments));
        EXPECT_EQ(outcome.exitCode, each.exitCode) << each.told;
        EXPECT_THAT(outcome.output + outcome.errors, testing::HasSubstr(each.told));
    }
}

} // namespace
