#include "tests/centre/CentreSupport.h"

#include <signal.h>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

std::vector<std::string> serve(const DataFolder& data, const std::string& fault = "hello@99=refuse")
{
    return centreCommand({"serve", data.path(), "--listen", "127.0.0.1:0", "--fault", fault});
}

constexpr char kKnown[] = "result: 0 bean { id: 1 companyno: \"LUMO\" }";

std::string askCompany(const std::string& address, const std::string& token)
{
    return ask(*channelTo(address, token), "queryCompanyTableByCompanyNo", "companyno: 'LUMO'");
}

TEST(Process, EndsCleanlyOnASignalAndTellsItsFaults)
{
    DataFolder data;
    Process process(serve(data, "queryCompanyTableByCompanyNo@2=refuse"));
    const std::string address = servingAddress(process);
    EXPECT_EQ(askCompany(address, data.token()), kKnown);
    EXPECT_THAT(askCompany(address, data.token()), HasSubstr("fault switch"));
    process.signal(SIGTERM);
    EXPECT_EQ(process.wait(), 0);
    EXPECT_THAT(process.readLine(), HasSubstr("queryCompanyTableByCompanyNo@2=refuse fired 1 times"));
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

TEST(Process, WhatWasAcknowledgedSurvivesAKill)
{
    DataFolder data;
    data.makeFile("tree/file");
    Process first(serve(data));
    ASSERT_NE(servingAddress(first), "");

    const std::string tokenFile = data.below("token");
    ASSERT_EQ(run(centreCommand({"import", data.path(), data.below("tree"), "--disk", "disk"})).exitCode, 0);
    ASSERT_EQ(
        run(centreCommand({"add-user", data.path(), "new", "--company", "LUMO", "--token-file", tokenFile}))
            .exitCode,
        0);
    first.signal(SIGKILL);
    first.wait();

    std::string token;
    std::ifstream(tokenFile) >> token;
    Process third(serve(data));
    const std::string address = servingAddress(third);
    EXPECT_EQ(askCompany(address, token), kKnown);
    EXPECT_THAT(ask(*channelTo(address, token), "queryFileTableByFileId", "file_id: 1"),
                HasSubstr("\"file\""));
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
    EXPECT_EQ(store.database().execAndGet("PRAGMA integrity_check").getString(), "ok");
    store.database().exec("CREATE TEMP TABLE earlier AS SELECT id, name FROM file");
    const auto report =
        centre::importTree(store, {data.below("tree"), "disk", "LUMO", ""}, [](const std::string&) {});
    EXPECT_GT(report.knownFiles, 0u);
    EXPECT_EQ(report.knownFiles + report.newFiles, kFiles);
    EXPECT_EQ(report.problems, static_cast<std::uint64_t>(kBadNames));
    EXPECT_EQ(
        store.database().execAndGet("SELECT count(*) FROM earlier JOIN file USING (id, name)").getUInt(),
        report.knownFiles);
}

TEST(Process, ExitCodesTellWhatIsWrong)
{
    DataFolder data, newer;
    data.makeFile("tree/bad\xff");
    const std::string foreign = data.below("foreign");
    data.makeFile("foreign/centre.db");
    std::ofstream(foreign + "/centre.db") << std::string(1000, 'x');
    centre::Store(newer.path()).database().exec("PRAGMA user_version = 99");
    const struct
    {
        std::vector<std::string> arguments;
        int code;
        const char* reason;
    } cases[] = {
        {{"import", data.path(), data.below("tree"), "--disk", "disk"}, 3, "tree/bad\\xff"},
        {{"serve", newer.path(), "--listen", "127.0.0.1:0"}, 5, "newer lumo-centre"},
        {{"serve", data.below("tree"), "--listen", "127.0.0.1:0"}, 5, "lumo-centre init"},
        {{"serve", data.path(), "--listen", "127.0.0.1:0", "--tls-cert", "x"}, 2, "--tls-key"},
        {{"serve", data.path(), "--listen", "127.0.0.1:0", "--tls-cert", "x", "--tls-key", "x"}, 1, "x"},
        {{"add-user", data.path(), "demo", "--company", "LUMO"}, 1, "already"},
        {{"add-box", data.path(), "B1"}, 2, "ADDRESS"},
        {{"add-area", data.path(), "2", "area", "--parent", "1"}, 1, "no area 1 to be its parent"},
        {{"add-version", data.path(), "--version", "1", "--path", "/etc", "--box", "B1"}, 2, "--module"},
        {{"init", data.path()}, 5, "already"},
        {{}, 2, "which command?"},
        {{"sevre"}, 2, "no command 'sevre'; the commands are init"},
        {{"serve", data.path(), "--lisen", "x"}, 2, "no option '--lisen'"},
        {{"serve", foreign, "--listen", "127.0.0.1:0"}, 5, "is not a database of lumo-centre"},
    };
    for (const auto& each : cases) {
        const auto [exitCode, output, errors] = run(centreCommand(each.arguments));
        EXPECT_EQ(exitCode, each.code) << each.reason;
        EXPECT_THAT(errors, AllOf(StartsWith("lumo-centre: "), HasSubstr(each.reason)));
        EXPECT_EQ(errors.find('\n'), errors.size() - 1) << errors;
    }
    for (const std::string& folder : {data.below("tree"), foreign})
        EXPECT_FALSE(std::filesystem::exists(folder + "/serve.lock"));
}

} // namespace
