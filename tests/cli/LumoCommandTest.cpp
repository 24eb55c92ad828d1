#include "tests/cli/CentreProcess.h"

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

namespace {

using clitest::CentreProcess;
using clitest::parsed;
using clitest::shown;
using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(Lumo, ShowsTheImportedTreeInEveryForm)
{
    CentreProcess centre;
    const auto tree = centre.folder() / "tree";
    writeFile(tree / "影像" / "deep" / "b.tif", "");
    writeFile(tree / "影像" / "a.tif", "");
    writeFile(tree / "readme", "");
    std::filesystem::create_directory(tree / "empty");
    centre.import(tree, "地球");
    centre.serve();

    for (const char* codePage : {"utf8", "gbk"}) {
        EXPECT_EQ(shown(centre.lumo({"tree", "/地球", "--code-page", codePage})), "地球/\n"
                                                                                  "├── empty/\n"
                                                                                  "├── 影像/\n"
                                                                                  "│   ├── deep/\n"
                                                                                  "│   │   └── b.tif\n"
                                                                                  "│   └── a.tif\n"
                                                                                  "└── readme\n"
                                                                                  "\n"
                                                                                  "3 folders, 3 files\n");
    }
    EXPECT_EQ(shown(centre.lumo({"tree", "/", "--depth", "2"})), "/\n"
                                                                 "└── 地球/\n"
                                                                 "    ├── empty/\n"
                                                                 "    ├── 影像/\n"
                                                                 "    └── readme\n"
                                                                 "\n"
                                                                 "1 disk, 2 folders, 1 file\n");
    EXPECT_EQ(shown(centre.lumo({"ls", "/地球/empty"})), "(no folders or files)\n");
    EXPECT_EQ(centre.lumo({"ls", "disk:1"}).output, centre.lumo({"ls", "/地球"}).output);

    EXPECT_EQ(parsed(centre.lumo({"whoami", "--json"})),
              (json{{"user", "demo"}, {"companyNo", "LUMO"}, {"companyID", 1}}));
    const json disk = parsed(centre.lumo({"disks", "--json"})).at(0);
    EXPECT_EQ(disk["diskName"], "地球");
    EXPECT_EQ(disk["rootPath"], tree.string());
    EXPECT_EQ(disk["refID"], nullptr);
    const json whole = parsed(centre.lumo({"tree", "disk:1", "--json"}));
    EXPECT_EQ(whole["folders"][1]["folders"][0]["files"][0]["fileName"], "b.tif");
    EXPECT_EQ(parsed(centre.lumo({"tree", "/", "--json"})).at(0), whole);
    const json file = parsed(centre.lumo({"show", "/地球/影像/a.tif", "--json"}));
    EXPECT_EQ(file["parentID"], whole["folders"][1]["folderID"]);
    EXPECT_EQ(file["path"], "/地球/影像/a.tif");
    const std::string identifier = "file:" + std::to_string(file["fileID"].get<unsigned int>());
    EXPECT_EQ(parsed(centre.lumo({"show", identifier, "--json"})), file);
    EXPECT_EQ(shown(centre.lumo({"ls", identifier})), "IDENTIFIER  NAME\n" + identifier + "      a.tif\n");
}

TEST(Lumo, TakesAndShowsAnyName)
{
    CentreProcess centre;
    const auto tree = centre.folder() / "tree";
    const std::vector<std::string> names = {"-dash",       "a b",    "a\\b",    "line\nbreak",
                                            "\x1b[31mred", "\x7f",   "\u009b1", "?*'\"",
                                            "名",          "file:1", "🌍"};
    for (const std::string& name : names)
        writeFile(tree / name, "");
    centre.import(tree, "odd");
    centre.serve();

    for (const std::string& name : names)
        EXPECT_EQ(parsed(centre.lumo({"show", "/odd/" + name, "--json"}))["fileName"], name);
    std::vector<std::string> listed;
    const Outcome listing = centre.lumo({"ls", "/odd", "--json"});
    const json files = parsed(listing)["files"];
    for (const json& file : files)
        listed.push_back(file["fileName"]);
    EXPECT_THAT(listed, testing::UnorderedElementsAreArray(names));
    for (const std::string& output :
         {listing.output, shown(centre.lumo({"ls", "/odd"})), shown(centre.lumo({"tree", "/odd"}))}) {
        EXPECT_EQ(output.find_first_of("\x1b\x7f"), std::string::npos);
        EXPECT_EQ(output.find("\u009b"), std::string::npos);
    }
    EXPECT_THAT(centre.lumo({"ls", "/odd"}).output, HasSubstr("line\\nbreak\n"));
}

TEST(Lumo, NameTooLongForItsRecordIsSaidSoAndNeverAnothersName)
{
    CentreProcess centre;
    const auto tree = centre.folder() / "tree";
    std::string longName;
    for (int i = 0; i < 85; ++i)
        longName += "长";
    writeFile(tree / "a", "");
    writeFile(tree / longName, "");
    writeFile(tree / "z", "");
    std::filesystem::create_directory(tree / (longName.substr(3) + "AAA"));
    centre.import(tree, "long");
    centre.serve();

    const json listing = parsed(centre.lumo({"ls", "/long", "--json"}));
    ASSERT_EQ(listing["files"].size(), 3U);
    EXPECT_EQ(listing["files"][0]["fileName"], "a");
    EXPECT_EQ(listing["files"][1]["fileName"], "z");
    EXPECT_EQ(listing["files"][2]["fileName"], nullptr);
    EXPECT_EQ(listing["folders"][0]["folderName"], nullptr);
    const std::string identifier =
        "file:" + std::to_string(listing["files"][2]["fileID"].get<unsigned int>());
    EXPECT_THAT(shown(centre.lumo({"tree", "/long"})),
                HasSubstr("└── (name too long for its record)  " + identifier + "\n"));
    EXPECT_THAT(shown(centre.lumo({"show", identifier})), HasSubstr("(name too long for its record)"));
    EXPECT_EQ(parsed(centre.lumo({"show", identifier, "--json", "--code-page", "gbk"}))["fileName"],
              longName);
    EXPECT_EQ(centre.lumo({"show", "/long/" + longName}).exitCode, 0);
}

TEST(Lumo, NamesThatTheCodePageMakesEqualAreNotTooLong)
{
    CentreProcess centre;
    writeFile(centre.folder() / "tree" / "🌍", "");
    writeFile(centre.folder() / "tree" / "🌎", "");
    centre.import(centre.folder() / "tree", "odd");
    centre.serve();
    const json files = parsed(centre.lumo({"ls", "/odd", "--json", "--code-page", "gbk"}))["files"];
    ASSERT_EQ(files.size(), 2U);
    EXPECT_TRUE(files[1]["fileName"].is_string());
}

TEST(Lumo, LongListIsShownWholeOrNotAtAll)
{
    CentreProcess centre;
    const auto tree = centre.folder() / "tree";
    std::filesystem::create_directory(tree);
    for (int i = 0; i < 25000; ++i)
        std::ofstream file(tree / ("f" + std::to_string(i)));
    centre.import(tree, "many");
    centre.serve({"--fault", "queryFileTableBySrcId@2=exit"});
    const Outcome cut = centre.lumo({"ls", "/many", "--json"});
    EXPECT_EQ(cut.exitCode, 8);
    EXPECT_THAT(cut.errors,
                testing::StartsWith("lumo: the centre failed the request: queryFileTableBySrcId: "));
    EXPECT_THAT(cut.output, IsEmpty());

    centre.serve();

    EXPECT_EQ(parsed(centre.lumo({"ls", "/many", "--json"}))["files"].size(), 25000U);
    EXPECT_THAT(shown(centre.lumo({"tree", "/many"})), testing::EndsWith("\n0 folders, 25000 files\n"));

    // A reader that ends early is no error.
    const std::string login = "--centre " + centre.address() + " --token-file " + centre.tokenFile() +
                              " --user demo --company LUMO ";
    const std::string listing = std::string(LUMO_PROGRAM) + " " + login + "ls /many";
    EXPECT_EQ(shown(run({"/bin/sh", "-c", listing + " | head -n 1"})), "IDENTIFIER  NAME\n");
    // Some parents make their children ignore the signal of a closed pipe.
    const Outcome ignoring = run({"/bin/sh", "-c", "trap '' PIPE; " + listing + " | true"});
    EXPECT_THAT(ignoring.errors, IsEmpty());
    for (const std::string& command : {listing, std::string(LUMO_PROGRAM) + " --version"}) {
        const Outcome full = run({"/bin/sh", "-c", command + " > /dev/full"});
        EXPECT_EQ(full.exitCode, 1) << command;
        EXPECT_THAT(full.errors, HasSubstr("can't write the output"));
    }
}

TEST(Lumo, LogFileGetsTheLibrarysLinesAndTheTerminalDoesNot)
{
    CentreProcess centre;
    centre.serve();
    const std::string log = centre.folder() / "log";
    EXPECT_EQ(shown(centre.lumo({"disks", "--log", log})), "(the company has no disks)\n");
    std::stringstream content;
    content << std::ifstream(log).rdbuf();
    EXPECT_THAT(content.str(), HasSubstr(" [INFO] Enter Function : getDisk File:LumoDataMgr"));
}

} // namespace
