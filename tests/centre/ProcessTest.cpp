#include "tests/centre/CentreProgram.h"
#include "tests/centre/CentreSupport.h"

#include <signal.h>

using testing::HasSubstr;

namespace {

std::vector<std::string> serve(const DataFolder& data, const std::string& fault = "hello@99=refuse")
{
    return centreCommand({"serve", data.path(), "--listen", "127.0.0.1:0", "--fault", fault});
}

TEST(Process, EndsCleanlyOnASignalAndReportsItsFaults)
{
    DataFolder data;
    Process process(serve(data, "queryDataAddress@2=refuse"));
    const auto channel = channelTo(servingAddress(process), data.token());
    for (const char* answer : {"result: -1", "failed: refused by a fault switch", "result: -1"})
        EXPECT_EQ(ask(*channel, "queryDataAddress", ""), answer);
    process.signal(SIGTERM);
    EXPECT_EQ(process.wait(), 0);
    EXPECT_THAT(process.readLine(), HasSubstr("queryDataAddress@2=refuse fired 1 time"));
}

TEST(Process, ASecondSignalEndsItAtOnce)
{
    DataFolder data;
    Process process(serve(data));
    ASSERT_NE(servingAddress(process), "");
    process.signal(SIGSTOP); // so that both signals are there when it goes on
    process.signal(SIGTERM);
    process.signal(SIGINT);
    process.signal(SIGCONT);
    EXPECT_THAT(process.wait(), testing::AnyOf(128 + SIGTERM, 128 + SIGINT));
}

TEST(Process, AnImportThatWasKilledIsCompletedByAnother)
{
    DataFolder data;
    constexpr std::uint64_t kFiles = 12000;
    for (std::uint64_t i = 0; i < kFiles; ++i)
        data.makeFile("tree/a/" + std::to_string(i));
    // More complaints than a pipe holds: nobody reads them, so the import stands still in "b", with a
    // transaction open, until it is killed.
    constexpr int kBadNames = 2000;
    for (int i = 0; i < kBadNames; ++i)
        data.makeFile("tree/b/bad\xff" + std::to_string(i) + std::string(100, '-'));
    const auto import = centreCommand({"import", data.path(), data.below("tree"), "--disk", "disk"});
    Process killed({"/bin/sh", "-c", "exec \"$@\" 2>&1", "sh", import[0], import[1], import[2], import[3],
                    import[4], import[5]});
    ASSERT_THAT(killed.readLine(), HasSubstr("not imported"));
    killed.signal(SIGKILL);
    killed.wait();

    centre::Store store(data.path());
    if (postgresql() == nullptr)
        EXPECT_EQ(store.database().value("PRAGMA integrity_check"), "ok");
    store.database().execute("CREATE TEMP TABLE earlier AS SELECT id, name FROM file");
    const auto report = centre::importTree(store, {data.below("tree"), "disk", "LUMO", ""});
    EXPECT_GT(report.knownFiles, 0u);
    EXPECT_EQ(report.knownFiles + report.newFiles, kFiles);
    EXPECT_EQ(report.problems, static_cast<std::uint64_t>(kBadNames));
    EXPECT_EQ(store.database().value("SELECT count(*) FROM earlier JOIN file USING (id, name)"),
              std::to_string(report.knownFiles));
}

} // namespace
