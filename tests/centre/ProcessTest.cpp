#include "centre/Import.h"
#include "tests/centre/CentreSupport.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

QStringList arguments(std::initializer_list<std::string> words)
{
    QStringList list;
    for (const std::string& word : words)
        list << QString::fromStdString(word);
    return list;
}

QStringList serve(const DataFolder& data, const std::string& fault = "hello@99=refuse")
{
    return arguments({"serve", data.path(), "--listen", "127.0.0.1:0", "--fault", fault});
}

constexpr char kKnown[] = "result: 0 bean { id: 1 companyno: \"LUMO\" }";

std::string askCompany(const std::string& address, const std::string& token)
{
    return ask(*channelTo(address, token), "queryCompanyTableByCompanyNo", "companyno: 'LUMO'");
}

TEST(Process, EndsCleanlyOnASignalAndTellsItsFaults)
{
    DataFolder data;
    CentreProcess process(serve(data, "queryCompanyTableByCompanyNo@2=refuse"));
    const std::string address = process.servingAddress();
    EXPECT_EQ(askCompany(address, data.token()), kKnown);
    EXPECT_THAT(askCompany(address, data.token()), HasSubstr("fault switch"));
    process.terminate();
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_THAT(process.output(), HasSubstr("queryCompanyTableByCompanyNo@2=refuse fired 1 times"));
}

TEST(Process, DiesInTheMiddleOfACallWhenToldTo)
{
    DataFolder data;
    CentreProcess process(serve(data, "queryCompanyTableByCompanyNo=exit"));
    EXPECT_THAT(askCompany(process.servingAddress(), data.token()), HasSubstr("failed: "));
    EXPECT_EQ(process.exitCode(), 137);
}

TEST(Process, WhatWasAcknowledgedSurvivesAKill)
{
    DataFolder data;
    data.makeFile("tree/file");
    CentreProcess first(serve(data));
    ASSERT_NE(first.servingAddress(), "");
    CentreProcess second(serve(data));
    EXPECT_EQ(second.exitCode(), 4);
    EXPECT_THAT(second.errorOutput(), HasSubstr("is being served by process"));

    CentreProcess import(arguments({"import", data.path(), data.below("tree"), "--disk", "disk"}));
    ASSERT_EQ(import.exitCode(), 0);
    const std::string tokenFile = data.below("token");
    CentreProcess addUser(
        arguments({"add-user", data.path(), "new", "--company", "LUMO", "--token-file", tokenFile}));
    ASSERT_EQ(addUser.exitCode(), 0);
    first.killNow();

    std::string token;
    std::ifstream(tokenFile) >> token;
    CentreProcess third(serve(data));
    const std::string address = third.servingAddress();
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
    CentreProcess killed(arguments({"import", data.path(), data.below("tree"), "--disk", "disk"}));
    ASSERT_TRUE(killed.waitForErrorOutput());
    killed.killNow();

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
        QStringList arguments;
        int code;
        const char* reason;
    } cases[] = {
        {arguments({"import", data.path(), data.below("tree"), "--disk", "disk"}), 3, "tree/bad\\xff"},
        {arguments({"serve", newer.path(), "--listen", "127.0.0.1:0"}), 5, "newer lumo-centre"},
        {arguments({"serve", data.below("tree"), "--listen", "127.0.0.1:0"}), 5, "lumo-centre init"},
        {arguments({"serve", data.path(), "--listen", "0.0.0.0:0"}), 2, "--tls-cert"},
        {arguments({"serve", data.path(), "--listen", "127.0.0.1:0", "--tls-cert", "x"}), 2, "--tls-key"},
        {arguments({"serve", data.path(), "--listen", "127.0.0.1:0", "--tls-cert", "x", "--tls-key", "x"}), 1,
         "x"},
        {arguments({"add-user", data.path(), "demo", "--company", "LUMO"}), 1, "already"},
        {arguments({"add-box", data.path(), "B1"}), 2, "ADDRESS"},
        {arguments({"init", data.path()}), 5, "already"},
        {arguments({}), 2, "which command?"},
        {arguments({"sevre"}), 2, "no command 'sevre'; the commands are init"},
        {arguments({"serve", data.path(), "--lisen", "x"}), 2, "no option '--lisen'"},
        {arguments({"serve", foreign, "--listen", "127.0.0.1:0"}), 5, "is not a database of lumo-centre"},
    };
    for (const auto& each : cases) {
        CentreProcess process(each.arguments);
        EXPECT_EQ(process.exitCode(), each.code) << each.reason;
        const std::string errors = process.errorOutput();
        EXPECT_THAT(errors, AllOf(StartsWith("lumo-centre: "), HasSubstr(each.reason)));
        EXPECT_EQ(errors.find('\n'), errors.size() - 1) << errors;
    }
    for (const std::string& folder : {data.below("tree"), foreign})
        EXPECT_FALSE(std::filesystem::exists(folder + "/serve.lock"));
}

} // namespace
