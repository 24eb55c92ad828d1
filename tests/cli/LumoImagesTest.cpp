#include "lumo/client/Record.h"
#include "tests/cli/CentreProcess.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace {

using nlohmann::json;

/// A kind with the number of its record's fields but `presence`, and what its record must have.
struct Kind
{
    const char* word;
    const char* typeName; ///< null: belongs to no type
    std::vector<std::string> names;
    std::size_t fields;
};

Kind kind(lumo::Record::Kind number, const char* typeName, std::size_t fields)
{
    const auto names = lumo::Record::fieldNames(number);
    return {lumo::Record::word(number), typeName, {names.begin(), names.end()}, fields};
}

const std::vector<Kind>& kinds()
{
    using Number = lumo::Record::Kind;
    static const std::vector<Kind> kKinds = {kind(Number::Photo, "框幅式影像", 46),
                                             kind(Number::Satellite, "卫星影像", 43),
                                             kind(Number::Ads, "航空三线阵影像", 38),
                                             kind(Number::Control, "控制点属性", 32),
                                             kind(Number::Point, nullptr, 7),
                                             kind(Number::Dem, "DEM", 58),
                                             kind(Number::Dsm, "DSM", 46),
                                             kind(Number::Dom, "DOM", 58),
                                             kind(Number::Dlg, "Dlg", 59)};
    return kKinds;
}

bool starts(const std::string& text, const char* head)
{
    return text.rfind(head, 0) == 0;
}

/// What a record is loaded with, and what is to be shown of it: a value of its own in each field. Of the
/// optional numbers those are left out for which `without` says so.
struct Sample
{
    json loaded;
    json shown;
};

Sample sampleOf(const Kind& kind, unsigned int id, unsigned int owner,
                const std::function<bool(int)>& without)
{
    Sample sample;
    int optional = 0;
    int number = 0;
    for (const std::string& name : kind.names) {
        ++number;
        json value = number + 0.5;
        if (number == 1) {
            value = id;
        } else if (name == "mainFileID") {
            sample.shown[name] = nullptr;
            continue;
        } else if (name == "dqConID") {
            value = owner;
        } else if (name == "datum" || name == "projection" || name == "hemisphere") {
            sample.loaded[name] = name == "datum" ? "中国2000" : name == "hemisphere" ? "北半球" : "高斯投影";
            sample.shown[name] = name == "datum" ? 3 : name == "hemisphere" ? 1 : 2;
            continue;
        } else if (starts(name, "count") || starts(name, "value") ||
                   starts(name, "point") != (name == "pointText")) {
            value = starts(name, "count") ? json(number) : value;
            if (without(optional++)) {
                sample.shown[name] = nullptr;
                continue;
            }
        } else if (!starts(name, "coordParam") && !starts(name, "coordExtra")) {
            value = "文" + std::to_string(number);
        }
        sample.loaded[name] = sample.shown[name] = value;
    }
    if (sample.loaded.contains("coordParam8")) { // one place for both
        sample.loaded.erase("coordParam8");
        sample.shown["coordParam8"] = sample.shown["coordExtra7"];
    }
    return sample;
}

/// The project 3 "north" with a type for each kind, and three records of each.
class LumoImages : public testing::Test
{
protected:
    void SetUp() override
    {
        std::ostringstream lines;
        lines << R"({"kind":"project","projectID":3,"projectName":"north"})" << '\n';
        unsigned int typeID = 10;
        for (const Kind& one : kinds()) {
            if (one.typeName != nullptr) {
                lines << json{{"kind", "type"},
                              {"typeID", ++typeID},
                              {"projectID", 3},
                              {"dataType", one.typeName}}
                             .dump()
                      << '\n';
            }
            for (unsigned int id = 1; id <= 3; ++id) {
                // Of the second record every other optional number, of the third none.
                Sample sample =
                    sampleOf(one, id, 1, [id](int bit) { return id == 3 || (id == 2 && bit % 2 == 0); });
                sample.loaded["kind"] = one.word;
                if (one.typeName != nullptr)
                    sample.loaded["typeID"] = typeID;
                lines << sample.loaded.dump() << '\n';
                m_Shown[one.word].push_back(sample.shown);
            }
        }
        writeFile(m_Centre.folder() / "lines", lines.str());
        m_Centre.done("lumo-centre load data lines");
        m_Centre.serve();
    }

    json parsed(const std::string& command) const
    {
        return json::parse(m_Centre.done(command + " --json"), nullptr, false);
    }

    CentreProcess m_Centre;
    std::map<std::string, json> m_Shown;
};

TEST_F(LumoImages, EveryRecordIsShownAsItWasLoaded)
{
    unsigned int typeID = 10;
    for (const Kind& one : kinds()) {
        EXPECT_EQ(one.names.size(), one.fields) << one.word;
        const std::string word = one.word;
        EXPECT_EQ(
            parsed(one.typeName == nullptr ? "lumo points 1" : "lumo images " + std::to_string(++typeID)),
            m_Shown[word])
            << word;
        EXPECT_EQ(parsed("lumo show " + word + " 2"), m_Shown[word][1]) << word;
    }
    EXPECT_THAT(m_Centre.done("lumo show sat 2"),
                testing::HasSubstr("\nvalue1       -\nvalue2       12.5\n"));
}

} // namespace
