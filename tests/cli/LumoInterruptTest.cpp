#include "tests/cli/CentreProcess.h"

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::HasSubstr;

/// Its signals come while a transfer or a registration is at work.
class LumoInterrupt : public testing::Test
{
protected:
    LumoInterrupt()
    {
        writeFile(disk / "readme", "old");
        writeFile(here / "big", content);
        centre.done("lumo-centre import data disk --disk 地球 --box B1");
    }

    /// Registers as many satellite images of type 1.
    std::vector<std::string> registering(int images)
    {
        centre.serve();
        centre.done(
            "lumo register project projectName=north; lumo register type projectID=1 dataType=卫星影像");
        std::string lines = "typeID,mainFileID\n";
        for (int i = 0; i < images; ++i)
            lines += "1,1\n";
        writeFile(centre.folder() / "scenes.csv", lines);
        return {"lumo", "register", "sat", "--from", centre.folder() / "scenes.csv", "--json"};
    }

    /// More than the box takes at once, and in every chunk something else.
    static std::string manyChunks()
    {
        std::string chunks;
        for (char chunk = 0; chunk < 24; ++chunk)
            chunks.append(1U << 20, chunk);
        return chunks;
    }

    const std::string content = manyChunks();
    CentreProcess centre;
    const fs::path disk = centre.folder() / "disk";
    const fs::path here = centre.folder() / "here";
};

TEST_F(LumoInterrupt, InterruptedRegistrationReportsWhatItDid)
{
    // Of more batches than fit into a pipe that is not read.
    Process lumo(centre.command(registering(10000)));
    std::string line = lumo.readLine();
    lumo.signal(SIGTERM);
    int registered = 0;
    json last;
    for (; !line.empty(); line = lumo.readLine()) {
        last = json::parse(line, nullptr, false);
        registered += last["event"] == "registered" ? 1 : 0;
    }
    EXPECT_EQ(lumo.wait(), 128 + SIGTERM);
    EXPECT_EQ(last["event"], "interrupted");
    EXPECT_EQ(last["registered"], registered);
    EXPECT_LT(registered, 10000);
    EXPECT_EQ(centre.done("lumo images 1 --json | grep -c imageID"), std::to_string(registered) + "\n");
}

// The thread sanitizer holds a signal back while the thread that got it waits in a library that is not
// instrumented; a second signal at once may go to a thread that waits there for good.
#ifndef __SANITIZE_THREAD__
TEST_F(LumoInterrupt, SecondInterruptEndsARegistrationThatIsNotAnswered)
{
    std::vector<std::string> command = registering(501); // one more than a batch
    command.insert(command.end(), {"--timeout", "0"});
    centre.serve({"--fault", "saveFullDataByType@2=stall"});
    Process lumo(centre.command(command));
    std::string line;
    do {
        line = lumo.readLine();
    } while (!line.empty() && line.find("progress") == std::string::npos);
    lumo.signal(SIGINT);
    lumo.signal(SIGTERM);
    EXPECT_THAT(lumo.wait(), testing::AnyOf(130, 143));
}
#endif

TEST_F(LumoInterrupt, InterruptLeavesWhatTheNextAttemptGoesOnWith)
{
    writeFile(disk / "大", content);
    centre.done("lumo-centre import data disk --disk 地球 --box B1");
    const int changes = inotify_init();
    char events[4096];
    const struct
    {
        const char* fault;
        std::vector<std::string> arguments;
        int signal;
        fs::path target;
    } kCases[] = {{"write@8=stall", {"lumo", "put", here / "big", "/地球"}, SIGINT, disk / "big"},
                  {"read@8=stall", {"lumo", "get", "/地球/大", here}, SIGTERM, here / "大"}};
    for (const auto& one : kCases) {
        centre.serve({"--fault", one.fault});
        std::vector<std::string> arguments = one.arguments;
        arguments.push_back("--json");
        const fs::path folder = one.target.parent_path();
        ASSERT_GE(inotify_add_watch(changes, folder.c_str(), IN_MODIFY | IN_CREATE), 0);
        Process lumo(centre.command(arguments));
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
        EXPECT_EQ(run(centre.command(one.arguments)).exitCode, 0);
        EXPECT_TRUE(readFile(one.target) == content) << one.fault;
        EXPECT_EQ(partial(), 0U);
        EXPECT_EQ(centre.stop(), 0);
    }
    close(changes);
}

TEST_F(LumoInterrupt, SignalEndsItWhenNobodyReadsItsErrors)
{
    centre.serve({"--fault", "write=stall"});
    const std::string pipe = here / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int full = open(pipe.c_str(), O_RDWR | O_NONBLOCK);
    while (write(full, pipe.data(), 1) == 1) {
    }
    std::vector<std::string> command = {"/bin/sh", "-c", "exec \"$@\" 2>" + pipe, "sh"};
    for (const std::string& word : centre.command({"lumo", "put", here / "big", "/地球", "--json"}))
        command.push_back(word);
    Process lumo(command);
    EXPECT_THAT(lumo.readLine(), HasSubstr("\"begin\""));
    lumo.signal(SIGINT);
    EXPECT_EQ(lumo.wait(), 128 + SIGINT);
    close(full);
}

} // namespace
