#include "tests/client/ClientCentre.h"

#include <gmock/gmock.h>

#include <functional>
#include <map>
#include <regex>
#include <sstream>
#include <type_traits>

namespace {

using lumo::Images;
using lumo::Record;
using lumo::Session;
using Kind = lumo::Error::Kind;

/// A kind with the number of its record's fields, and the name of its types; null: it belongs to no type.
const struct
{
    Record::Kind kind;
    std::size_t fields;
    const char* typeName;
} kKinds[] = {{Record::Kind::Photo, 46, "框幅式影像"},
              {Record::Kind::Satellite, 43, "卫星影像"},
              {Record::Kind::Ads, 38, "航空三线阵影像"},
              {Record::Kind::Control, 32, "控制点属性"},
              {Record::Kind::Point, 7, nullptr},
              {Record::Kind::Dem, 58, "DEM"},
              {Record::Kind::Dsm, 46, "DSM"},
              {Record::Kind::Dom, 58, "DOM"},
              {Record::Kind::Dlg, 59, "Dlg"}};

using Texts = std::map<std::string, std::string>;

/// The values of a record by the names of its fields.
Texts shown(const Record& record)
{
    Texts texts;
    for (const Record::Field& field : record.fields()) {
        std::ostringstream text;
        std::visit(
            [&text](const auto& value) {
                using Value = std::decay_t<decltype(value)>;
                if constexpr (std::is_same_v<Value, Record::Code>)
                    text << "code " << value.number;
                else if constexpr (std::is_same_v<Value, Record::Absent>)
                    text << "absent";
                else if constexpr (std::is_same_v<Value, Record::TooLong>)
                    text << "too long";
                else
                    text << value;
            },
            field.value);
        texts[field.name] = text.str();
    }
    return texts;
}

/// A line to load a record from, with a value of its own in each field, and what is to be shown of it. The
/// second record has every other optional number, the third has none.
struct Sample
{
    Sample(Record::Kind kind, int id, int type) : line(std::string("{\"kind\":\"") + Record::word(kind) + '"')
    {
        static const std::map<std::string, std::pair<const char*, const char*>> kCodes = {
            {"datum", {"中国2000", "code 3"}},
            {"projection", {"高斯投影", "code 2"}},
            {"hemisphere", {"北半球", "code 1"}}};
        static const std::regex optionals("count.*|value.*|point[^T].*"), numbers("coord(Param|Extra).*");
        int optional = 0, number = 0;
        for (const std::string name : Record::fieldNames(kind)) {
            ++number;
            std::string value = std::to_string(number) + (name.find("count") == 0 ? "" : ".5"),
                        loaded = value;
            if (number == 1 || name == "dqConID")
                loaded = value = std::to_string(number == 1 ? id : 1);
            else if (kCodes.count(name) != 0)
                loaded = '"' + std::string(kCodes.at(name).first) + '"', value = kCodes.at(name).second;
            else if (name == "mainFileID" ||
                     (std::regex_match(name, optionals) && (id == 3 || (id == 2 && optional++ % 2 == 0))))
                value = "absent";
            else if (!std::regex_match(name, optionals) && !std::regex_match(name, numbers))
                loaded = "\"文" + std::to_string(number) + '"', value = "文" + std::to_string(number);
            texts[name] = value;
            if (value != "absent" && name != "coordParam8")
                line += ",\"" + name + "\":" + loaded;
        }
        if (texts.count("coordParam8") != 0) // one place for both
            texts["coordParam8"] = texts["coordExtra7"];
        line += type == 0 ? "}\n" : ",\"typeID\":" + std::to_string(type) + "}\n";
    }

    std::string line;
    Texts texts;
};

/// A session with a project, "north", and a type for satellite images in it.
class ClientImages : public ClientCentre
{
protected:
    void open(const std::vector<std::string>& faults = {}, const std::string& codePage = "utf8")
    {
        serve({"a.tif", "b.tif"}, faults);
        Session::Settings chosen = settings();
        chosen.codePage = codePage;
        m_Session.emplace(chosen);
        const Images images = m_Session->images();
        m_Project = lumo::ProjectId(images.add(Record::Kind::Project, {{"projectName", "north"}}).number());
        m_Type = images.add(Record::Kind::Type,
                            {{"projectID", std::to_string(m_Project.number())}, {"dataType", "卫星影像"}});
    }

    Images::Fields scene(const char* file, Images::Fields more = {}) const
    {
        const lumo::Entry entry = m_Session->catalogue().find(file);
        more.insert(more.begin(), {{"typeID", std::to_string(m_Type.number())},
                                   {"mainFileID", std::to_string(entry.file.number())}});
        return more;
    }

    std::optional<Session> m_Session;
    lumo::ProjectId m_Project;
    lumo::RecordId m_Type;
};

TEST_F(ClientImages, FieldsAreAbsentUnlessTheCentreHasThem)
{
    open();
    const Images images = m_Session->images();
    const lumo::RecordId id =
        images.add(Record::Kind::Satellite, scene("/earth/a.tif", {{"imageName", "影像"},
                                                                   {"text3", std::string(40, 'x')},
                                                                   {"value2", "0"},
                                                                   {"count1", "7"},
                                                                   {"datum", "WGS84"},
                                                                   {"text1", ""}}));
    const Record record = images.record(Record::Kind::Satellite, id);
    EXPECT_EQ(record.id(), id);
    EXPECT_EQ(record.get<std::string>("imageName"), "影像");
    EXPECT_EQ(record.get<double>("value2"), 0.0);
    EXPECT_EQ(record.get<int>("count1"), 7);
    EXPECT_EQ(record.get<double>("value1"), std::nullopt);
    EXPECT_EQ(record.get<int>("value2"), std::nullopt) << "of another type";
    EXPECT_TRUE(std::holds_alternative<Record::Absent>(*record.find("count2")));
    EXPECT_TRUE(std::holds_alternative<Record::TooLong>(*record.find("text3"))) << "16 bytes hold it not";
    EXPECT_EQ(record.find("presence"), nullptr);
    EXPECT_EQ(images.project("north").projectId(), m_Project);
    EXPECT_EQ(images.project(m_Project).get<std::string>("projectName"), "north");
}

TEST_F(ClientImages, EveryFieldOfEveryKindIsTheOneThatWasLoaded)
{
    open({}, "gbk"); // else there are no codes
    const Images images = m_Session->images();
    load("{\"kind\":\"project\",\"projectID\":2,\"projectName\":\"all\"}");
    int type = 10;
    for (const auto& [kind, fields, typeName] : kKinds) {
        SCOPED_TRACE(Record::word(kind));
        const int owner = typeName == nullptr ? 0 : ++type;
        std::vector<Sample> samples;
        std::string lines;
        if (typeName != nullptr)
            lines = "{\"kind\":\"type\",\"projectID\":2,\"typeID\":" + std::to_string(type) +
                    ",\"dataType\":\"" + typeName + "\"}\n";
        for (const int id : {1, 2, 3})
            lines += samples.emplace_back(kind, id, owner).line;
        load(lines);
        const std::vector<Record> records =
            owner == 0 ? images.points(lumo::RecordId(1))
                       : images.records(images.record(Record::Kind::Type, lumo::RecordId(unsigned(owner))));
        ASSERT_EQ(records.size(), samples.size());
        for (std::size_t i = 0; i < records.size(); ++i)
            EXPECT_EQ(shown(records[i]), samples[i].texts);
        EXPECT_EQ(records[0].fields().size(), fields);
        EXPECT_EQ(shown(images.record(kind, lumo::RecordId(2))), samples[1].texts);
    }
}

TEST_F(ClientImages, SearchKeepsToItsConditions)
{
    open();
    const Images images = m_Session->images();
    const std::vector<lumo::RecordId> ids =
        images.addAll(Record::Kind::Satellite,
                      {scene("/earth/a.tif", {{"sensor", "S"}}), scene("/earth/b.tif", {{"sensor", "T"}})});
    ASSERT_EQ(ids.size(), 2U);
    const lumo::CommentId mark = m_Session->marks().add("cloudy", "half");
    m_Session->marks().link(Record::Kind::Satellite, {ids[1]}, mark);
    const struct
    {
        const char* what;
        std::function<void(Images::Search&)> change;
        std::vector<lumo::RecordId> found;
    } kCases[] = {
        {"nothing asked", [](auto&) {}, ids},
        {"project", [](auto& search) { search.project = "north"; }, ids},
        {"sensor", [](auto& search) { search.sensor = "S"; }, {ids[0]}},
        {"mark", [mark](auto& search) { search.mark = mark; }, {ids[1]}},
        {"both", [mark](auto& search) { search.mark = mark, search.sensor = "S"; }, {}},
        {"type", [](auto& search) { search.type = "DEM"; }, {}},
    };
    for (const auto& one : kCases) {
        Images::Search search;
        one.change(search);
        std::vector<lumo::RecordId> found;
        for (const Record& record : images.search(search))
            found.push_back(record.id());
        EXPECT_EQ(found, one.found) << one.what;
    }
    EXPECT_EQ(images.records(images.type(m_Project, "卫星影像")).size(), 2U);
    EXPECT_EQ(images.records(Record::Kind::Satellite, m_Project, mark).front().id(), ids[1]);

    Images::Search backwards;
    backwards.from = "2024-02-01";
    backwards.to = "2024-01-01";
    Images::Search offEarth;
    offEarth.bounds = Images::Search::Bounds{0, 0, 10, 91};
    for (const Images::Search& search : {backwards, offEarth})
        EXPECT_EQ(errorOf([&] { images.search(search); }), Kind::WrongUse);
}

TEST_F(ClientImages, WhatIsNotThereOrDoesNotFitIsSaidInItsKind)
{
    open();
    const Images images = m_Session->images();
    const lumo::Entry file = m_Session->catalogue().find("/earth/a.tif");
    const lumo::Comments comments = m_Session->comments();
    const lumo::Comments marks = m_Session->marks();
    const struct
    {
        const char* what;
        std::function<void()> call;
        Kind kind;
    } kCases[] = {
        {"project", [&] { images.project("south"); }, Kind::NotFound},
        {"record", [&] { images.record(Record::Kind::Dem, lumo::RecordId(9)); }, Kind::NotFound},
        {"a disk as an image", [&] { images.record(Record::Kind::Disk, lumo::RecordId(1)); }, Kind::WrongUse},
        {"points of a project", [&] { images.records(Record::Kind::Point, m_Project); }, Kind::WrongUse},
        {"no main file",
         [&] {
             images.add(Record::Kind::Satellite, {{"typeID", "1"}});
         },
         Kind::WrongUse},
        {"a comma",
         [&] {
             images.add(Record::Kind::Project, {{"projectName", "a,b"}});
         },
         Kind::WrongUse},
        {"unknown field",
         [&] {
             images.add(Record::Kind::Satellite, scene("/earth/a.tif", {{"red", "1"}}));
         },
         Kind::Refused},
        {"no link", [&] { images.projectOf(file); }, Kind::NotFound},
        {"comment", [&] { comments.get(lumo::CommentId(9)); }, Kind::NotFound},
        {"content", [&] { comments.find("no", "thing"); }, Kind::NotFound},
        {"a mark for a file",
         [&] { marks.link(Record::Kind::File, {lumo::RecordId(1)}, lumo::CommentId(1)); }, Kind::WrongUse},
        {"area", [&] { m_Session->centre().areas(lumo::AreaId(9)); }, Kind::NotFound},
        {"version", [&] { m_Session->centre().version({}); }, Kind::NotFound},
    };
    for (const auto& one : kCases)
        EXPECT_EQ(errorOf(one.call), one.kind) << one.what;
    images.link(m_Project, file);
    EXPECT_EQ(images.projectOf(file).projectId(), m_Project);
    images.unlink(m_Project, file);
    EXPECT_EQ(errorOf([&] { images.unlink(m_Project, file); }), Kind::NotFound);
}

TEST_F(ClientImages, CentreAnalysesAndCopiesOneCallAtATime)
{
    open({"AnalyzeImages=stall"});
    const lumo::Centre centre = m_Session->centre();
    const lumo::Catalogue catalogue = m_Session->catalogue();
    const lumo::Entry image = catalogue.find("/earth/a.tif");
    const auto verdicts = centre.analyze({image}, {}, false, 60000);
    ASSERT_EQ(verdicts.size(), 1U);
    EXPECT_FALSE(verdicts[0].passed) << "it is text";
    EXPECT_THAT(verdicts[0].reason, testing::HasSubstr("image a.tif: main file"));

    std::ofstream(below("copies/new.txt")) << "new";
    centre.copyIn(below("copies/new.txt"), catalogue.find("/earth"), "made", false, 60000);
    const lumo::Entry copied = catalogue.find("/earth/made/new.txt");
    centre.copyOut(copied, below("copies/back.txt"), false, 60000);
    EXPECT_TRUE(std::filesystem::exists(below("copies/back.txt")));
    EXPECT_EQ(errorOf([&] { centre.copyOut(copied, "/nowhere/x", false, 60000); }), Kind::Refused);

    const auto late = centre.analyze({image, copied}, {}, false, 1);
    EXPECT_THAT(late.at(0).reason, testing::HasSubstr("no answer came"));
    EXPECT_EQ(errorOf([&] { centre.analyze({image}, {}, false, 1); }), Kind::Busy);
}

} // namespace
