#include "tests/cli/CentreProcess.h"

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <sstream>

namespace {

namespace fs = std::filesystem;
using clitest::CentreProcess;
using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::vector<json> eventsOf(const std::string& output)
{
    std::vector<json> events;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);)
        events.push_back(json::parse(line, nullptr, false));
    return events;
}

/// More than the box takes at once, and in every chunk something else.
std::string manyChunks()
{
    std::string content;
    for (char chunk = 0; chunk < 24; ++chunk)
        content.append(1U << 20, chunk);
    return content;
}

class LumoTransfer : public testing::Test
{
protected:
    LumoTransfer() : disk(centre.folder() / "disk"), here(centre.folder() / "here")
    {
        writeFile(disk / "readme", "old");
        centre.import(disk, "地球");
        fs::create_directory(here);
    }

    /// Its output; it must have worked.
    std::string done(const std::vector<std::string>& arguments,
                     const std::vector<std::string>& environment = {}) const
    {
        const Outcome outcome = centre.lumo(arguments, environment);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.output << outcome.errors;
        EXPECT_THAT(outcome.errors, Not(HasSubstr("lumo: ")));
        EXPECT_THAT(outcome.output + outcome.errors, AllOf(Not(HasSubstr("\r")), Not(HasSubstr("\x1b"))));
        return outcome.output;
    }

    /// For a shell: a command of lumo.
    std::string typed(const std::vector<std::string>& arguments) const
    {
        std::string command;
        for (const std::string& word : centre.lumoCommand(arguments))
            command += word + " ";
        return command;
    }

    CentreProcess centre;
    const fs::path disk;
    const fs::path here;
};

TEST_F(LumoTransfer, TreeComesBackAsItWasSent)
{
    const fs::path tree = centre.folder() / "影像";
    writeFile(tree / "深" / "甲 b.tif", manyChunks());
    writeFile(tree / "empty", "");
    fs::create_directories(tree / "深" / "空");
    const fs::path single = centre.folder() / "notes";
    writeFile(single, "x");
    centre.serve();

    const std::string sent = done({"put", tree.string() + "/", single, "/地球"});
    EXPECT_THAT(sent, HasSubstr(tree.string() + " -> /地球/影像: done, 24.0 MiB in "));
    EXPECT_THAT(sent, HasSubstr(single.string() + " -> /地球/notes: done, 1 B in "));
    EXPECT_THAT(done({"tree", "/地球"}), HasSubstr("│   ├── 深/\n│   │   ├── 空/\n"));

    // Neither the locale nor the code page of records may touch a name.
    for (const char* setting : {"LUMO_CODE_PAGE=utf8", "LUMO_CODE_PAGE=gbk"}) {
        const fs::path folder = here / setting;
        EXPECT_THAT(done({"get", "/地球/影像", "/地球/notes", "--to", folder}, {setting, "LC_ALL=C"}),
                    HasSubstr("/地球/影像 -> " + (folder / "影像").string() + ": done, 24.0 MiB in "));
        EXPECT_EQ(treeOf(folder / "影像"), treeOf(tree));
        EXPECT_EQ(readFile(folder / "notes"), "x");
    }
    done({"get", "disk:1", "--to", here});
    EXPECT_EQ(treeOf(here / "地球"), treeOf(disk));
}

TEST_F(LumoTransfer, ExistingFileIsKeptUnlessToldOtherwise)
{
    const std::string longName(255, 'n'); // more than its record holds
    writeFile(disk / longName, "long");
    centre.import(disk, "地球");
    centre.serve();
    for (const char* result : {": done, 4 B in ", ": kept, the file exists already"})
        EXPECT_THAT(done({"get", "/地球/" + longName, here}), HasSubstr((here / longName).string() + result));
    const fs::path local = here / "readme";
    fs::create_symlink("nowhere", local);
    EXPECT_THAT(done({"get", "/地球/readme", here}), HasSubstr("kept, the file exists already"));
    fs::remove(local);
    writeFile(local, "mine");
    EXPECT_THAT(done({"get", "/地球/readme", here}), HasSubstr("kept, the file exists already"));
    EXPECT_THAT(done({"put", local, "/地球", "--keep"}), HasSubstr("kept, the file exists already"));
    EXPECT_EQ(readFile(local), "mine");
    EXPECT_EQ(readFile(disk / "readme"), "old");
    writeFile(disk / "mine", "theirs"); // the catalogue doesn't know it
    fs::copy_file(local, here / "mine");
    EXPECT_THAT(done({"put", here / "mine", "/地球"}), HasSubstr("kept, the file exists already"));
    fs::remove(disk / "mine"); // it does now
    EXPECT_THAT(done({"put", here / "mine", "/地球"}), HasSubstr("done, 4 B in "));
    EXPECT_THAT(done({"put", "--overwrite", local, "/地球"}), HasSubstr("done, 4 B in "));
    EXPECT_EQ(readFile(disk / "readme"), "mine");
    writeFile(local, "other");
    EXPECT_THAT(done({"get", "/地球/readme", here, "--overwrite"}), HasSubstr("done, 4 B in "));
    EXPECT_EQ(readFile(local), "mine");
}

TEST_F(LumoTransfer, EventsTellEachTransferFromItsBeginToItsEnd)
{
    centre.serve();
    writeFile(here / "new", manyChunks());
    writeFile(here / "readme", "mine");
    const std::vector<json> events =
        eventsOf(done({"put", here / "new", here / "readme", "/地球", "--json"}));
    ASSERT_GE(events.size(), 5U);
    EXPECT_EQ(events.back()["event"], "finished");
    EXPECT_EQ(events.back()["arrived"], 2);
    for (int number = 1; number <= 2; ++number) {
        std::vector<json> own;
        std::copy_if(events.begin(), events.end(), std::back_inserter(own),
                     [number](const json& event) { return event.value("transfer", 0) == number; });
        ASSERT_GE(own.size(), 2U);
        EXPECT_EQ(own.front()["event"], "begin");
        EXPECT_THAT(own.front()["taskID"], StartsWith(number == 1 ? "new{" : "readme{"));
        EXPECT_EQ(own.back()["event"], "end");
        EXPECT_EQ(own.back()["result"], number == 1 ? "done" : "kept");
        int percent = 0;
        for (auto event = own.begin() + 1; event != own.end() - 1; ++event) {
            EXPECT_GT((*event)["percent"], percent);
            percent = (*event)["percent"];
        }
        EXPECT_EQ(percent, 100);
    }
}

TEST_F(LumoTransfer, WhatDoesNotArriveIsToldAndTheRestArrives)
{
    writeFile(centre.folder() / "nowhere" / "f", "x");
    centre.administrate("import", {centre.folder() / "nowhere", "--disk", "nowhere"});
    writeFile(disk / "gone" / "f", "x");
    centre.import(disk, "地球");
    fs::remove(disk / "gone" / "f");
    centre.serve();
    const Outcome some = centre.lumo({"get", "/地球/gone", "/地球/readme", "/nowhere", here});
    EXPECT_EQ(some.exitCode, 9);
    EXPECT_EQ(readFile(here / "readme"), "old");
    EXPECT_THAT(some.errors, AllOf(HasSubstr("lumo: /地球/gone -> " + (here / "gone").string() +
                                             ": the source, or something below it, is not there ("),
                                   HasSubstr("/gone/f: No such file or directory)")));
    EXPECT_THAT(some.errors,
                HasSubstr("/nowhere -> " + (here / "nowhere").string() + ": its disk is on no storage box"));
    EXPECT_THAT(some.errors, testing::EndsWith("lumo: 2 of 3 did not arrive\n"));
    EXPECT_EQ(centre.stop(), 0);

    const std::string big = centre.folder() / "big";
    writeFile(big, manyChunks());
    const struct
    {
        const char* fault;
        std::vector<std::string> arguments;
        int code;
        const char* message;
    } kCases[] = {
        {"write=refuse", {"put", big, "/地球"}, 213, "(the box failed: refused by"},
        {"store=refuse", {"put", centre.tokenFile(), "/地球"}, 213, "(the box failed: refused by"},
        {"getKestaInfo=refuse", {"get", "/地球/readme", here}, 0, "failed the request: getKestaInfo: "},
        {"queryFileTableBySrcId=refuse", {"get", "/地球", here}, 10, "(queryFileTableBySrcId: "},
    };
    for (const auto& one : kCases) {
        centre.serve({"--fault", one.fault});
        std::vector<std::string> arguments = one.arguments;
        arguments.push_back("--json");
        const Outcome outcome = centre.lumo(arguments);
        EXPECT_EQ(outcome.exitCode, 9) << one.fault;
        const std::vector<json> events = eventsOf(outcome.output);
        ASSERT_GE(events.size(), 2U) << one.fault << outcome.errors;
        const json& end = events[events.size() - 2];
        EXPECT_EQ(end.value("result", ""), "failed") << one.fault;
        EXPECT_EQ(end.value("code", -1), one.code) << one.fault << end;
        EXPECT_THAT(end.value("message", ""), HasSubstr(one.message)) << one.fault;
        EXPECT_THAT(outcome.errors, HasSubstr(one.message)) << one.fault;
        EXPECT_EQ(events.back()["failed"], 1);
        EXPECT_EQ(centre.stop(), 0);
    }
}

TEST_F(LumoTransfer, InterruptLeavesWhatTheNextAttemptGoesOnWith)
{
    const std::string content = manyChunks();
    writeFile(here / "big", content);
    writeFile(disk / "大", content);
    centre.import(disk, "地球");
    const int changes = inotify_init();
    char events[4096];
    const struct
    {
        const char* fault;
        std::vector<std::string> arguments;
        int signal;
        fs::path target;
    } kCases[] = {{"write@8=stall", {"put", here / "big", "/地球"}, SIGINT, disk / "big"},
                  {"read@8=stall", {"get", "/地球/大", here}, SIGTERM, here / "大"}};
    for (const auto& one : kCases) {
        centre.serve({"--fault", one.fault});
        std::vector<std::string> arguments = one.arguments;
        arguments.push_back("--json");
        const fs::path folder = one.target.parent_path();
        ASSERT_GE(inotify_add_watch(changes, folder.c_str(), IN_MODIFY | IN_CREATE), 0);
        Process lumo(centre.lumoCommand(arguments));
        EXPECT_THAT(lumo.readLine(), HasSubstr("\"begin\""));
        const auto partial = [&folder] {
            std::uintmax_t bytes = 0;
            for (const auto& entry : fs::directory_iterator(folder))
                bytes = entry.path().filename().string()[0] == '.' ? entry.file_size() : bytes;
            return bytes;
        };
        while (partial() < content.size() / 4)
            ASSERT_GT(read(changes, events, sizeof events), 0);
        lumo.signal(one.signal);
        std::string last;
        for (std::string line = lumo.readLine(); !line.empty(); line = lumo.readLine())
            last = line;
        EXPECT_EQ(last, "{\"event\":\"interrupted\"}");
        EXPECT_EQ(lumo.wait(), 128 + one.signal);
        EXPECT_FALSE(fs::exists(one.target));
        EXPECT_EQ(centre.stop(), 0);
        EXPECT_GE(partial(), content.size() / 4);

        centre.serve();
        done(one.arguments);
        EXPECT_TRUE(readFile(one.target) == content) << one.fault;
        EXPECT_EQ(partial(), 0U);
        EXPECT_EQ(centre.stop(), 0);
    }
    close(changes);
}

TEST_F(LumoTransfer, SignalEndsItWhenNobodyReadsItsErrors)
{
    writeFile(here / "big", manyChunks());
    centre.serve({"--fault", "write=stall"});
    const std::string pipe = here / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int full = open(pipe.c_str(), O_RDWR | O_NONBLOCK);
    while (write(full, pipe.data(), 1) == 1) {
    }
    Process lumo({"/bin/sh", "-c", "exec " + typed({"put", here / "big", "/地球", "--json"}) + "2>" + pipe});
    EXPECT_THAT(lumo.readLine(), HasSubstr("\"begin\""));
    lumo.signal(SIGINT);
    EXPECT_EQ(lumo.wait(), 128 + SIGINT);
    close(full);
}

TEST_F(LumoTransfer, OutputThatFailsStopsNoTransferAndIsTold)
{
    std::vector<std::string> arguments = {"put"};
    for (int i = 0; i < 60; ++i) {
        arguments.push_back(here / std::to_string(i));
        writeFile(arguments.back(), "x");
    }
    arguments.insert(arguments.end(), {"/地球", "--overwrite"});
    centre.serve();
    const struct
    {
        std::string command;
        const char* message;
    } kCases[] = {
        {typed(arguments) + "> /dev/full", "lumo: can't write the output: No space left on device\n"},
        {"trap '' PIPE; { " + typed(arguments) + "--json; echo $? >" + (here / "code").string() +
             "; } | true; exit $(cat " + (here / "code").string() + ")",
         "lumo: nobody reads the output any more\n"}};
    for (const auto& one : kCases) {
        const Outcome outcome = run({"/bin/sh", "-c", one.command}, {"XDG_CONFIG_HOME=/nowhere"});
        EXPECT_EQ(outcome.exitCode, 1) << one.command;
        EXPECT_EQ(outcome.errors, one.message);
        for (int i = 0; i < 60; ++i)
            EXPECT_TRUE(fs::remove(disk / std::to_string(i))) << i;
    }
}

TEST_F(LumoTransfer, TerminalGetsABarThatLeavesNothingBehind)
{
    centre.serve();
    const Outcome outcome =
        run({"/usr/bin/script", "-qec", typed({"put", centre.tokenFile(), "/地球"}), "/dev/null"},
            {"XDG_CONFIG_HOME=/nowhere"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("%"));
    const std::size_t bar = outcome.output.rfind("\r\x1b[K");
    ASSERT_NE(bar, std::string::npos) << outcome.output;
    EXPECT_THAT(outcome.output.substr(bar + 4), StartsWith(centre.tokenFile() + " -> /地球/token: done, "));
}

TEST_F(LumoTransfer, PackagesComeByTheirVersion)
{
    writeFile(centre.folder() / "packages" / "程序" / "bin", "program");
    writeFile(centre.folder() / "packages" / "module", "module");
    const std::string packages = centre.folder() / "packages";
    centre.administrate("add-version", {"--program", "P", "--version", "1.9", "--path", packages + "/程序",
                                        "--box", "B1", "--notes", "先"});
    centre.administrate(
        "add-version", {"--module", "M", "--version", "1.10", "--path", packages + "/module", "--box", "B1"});
    centre.administrate("add-area", {"1", "中国"});
    centre.serve();
    EXPECT_THAT(done({"get-program", "P", "1.9", here}),
                StartsWith("program P 1.9 -> " + (here / "程序").string() + ": done, 7 B in "));
    EXPECT_EQ(readFile(here / "程序" / "bin"), "program");
    done({"get-module", "M", "1.10", here, "--box", "B1"});
    EXPECT_EQ(readFile(here / "module"), "module");

    const json version = json::parse(done({"versions", "--program", "P", "--json"}));
    EXPECT_EQ(version["text2"], "1.9");
    EXPECT_EQ(version["text5"], "先");
    EXPECT_THAT(done({"versions", "--module", "M", "1.10", "--code-page", "gbk"}),
                HasSubstr("Version      1.10\n"));
    EXPECT_THAT(done({"boxes"}), StartsWith("BOX  ADDRESS\nB1   127.0.0.1:"));
    EXPECT_EQ(done({"areas", "1"}), "AREA  NAME\n1     中国\n");
}

} // namespace
