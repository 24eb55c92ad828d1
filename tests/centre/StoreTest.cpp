#include "centre/Token.h"
#include "tests/centre/CentreSupport.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>

#include <sys/stat.h>

using centre::ExitCode;
using testing::HasSubstr;

namespace {

std::string content(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

template <class Function>
void expectError(ExitCode code, const std::string& reason, Function function)
{
    try {
        function();
        ADD_FAILURE() << "no error: " << reason;
    } catch (const centre::Error& error) {
        EXPECT_EQ(error.code(), code);
        EXPECT_THAT(error.what(), HasSubstr(reason));
    }
}

TEST(Store, KeepsNoToken)
{
    DataFolder data;
    EXPECT_EQ(data.token().size(), 43u);
    const std::string second = centre::Store(data.path()).addUser("second", "LUMO");
    EXPECT_NE(second, data.token());
    for (const auto& entry : std::filesystem::directory_iterator(data.path()))
        for (const std::string& token : {data.token(), second})
            EXPECT_EQ(content(entry.path()).find(token), std::string::npos) << entry.path();
}

TEST(Store, RefusesNamesThatAreTakenOrCannotBe)
{
    DataFolder data;
    centre::Store store(data.path());
    store.addBox("B1", "127.0.0.1:1");
    expectError(ExitCode::Failed, "company LUMO already", [&] { store.addCompany("LUMO"); });
    expectError(ExitCode::Failed, "user demo already", [&] { store.addUser("demo", "LUMO"); });
    expectError(ExitCode::Failed, "box B1 already", [&] { store.addBox("B1", "127.0.0.1:2"); });
    expectError(ExitCode::Failed, "no company X", [&] { store.addUser("other", "X"); });
    expectError(ExitCode::WrongUse, "HOST:PORT", [&] { store.addBox("B2", "host"); });
    expectError(ExitCode::WrongUse, "must not be empty", [&] { store.addCompany(""); });
    expectError(ExitCode::WrongUse, "a\\x0ab", [&] { store.addUser("a\nb", "LUMO"); });
}

TEST(Store, IsMadeOnceAndWhole)
{
    DataFolder data;
    expectError(ExitCode::NoDataFolder, "already",
                [&] { centre::Store::create(data.path(), "LUMO", "demo"); });
    expectError(ExitCode::WrongUse, "user name",
                [&] { centre::Store::create(data.below("new"), "LUMO", ""); });
    expectError(ExitCode::NoDataFolder, "lumo-centre init", [&] { centre::Store store(data.below("new")); });
    centre::Store::create(data.below("new"), "N", "user");
    EXPECT_EQ(centre::Store(data.below("new")).companyId("N"), 1u);
}

TEST(Store, RefusesAnotherProgramsOrANewerVersionsDatabase)
{
    DataFolder data;
    centre::Store store(data.path());
    store.database().exec("PRAGMA user_version = 99");
    expectError(ExitCode::NoDataFolder, "newer lumo-centre", [&] { centre::Store again(data.path()); });
    store.database().exec("PRAGMA application_id = 1");
    expectError(ExitCode::NoDataFolder, "not a database of", [&] { centre::Store again(data.path()); });
    expectError(ExitCode::NoDataFolder, "another program's",
                [&] { centre::Store::create(data.path(), "LUMO", "demo"); });
}

TEST(Token, FileIsForItsOwnerAlone)
{
    DataFolder data;
    data.makeFile("token");
    ::chmod(data.below("token").c_str(), 0644);
    centre::writeTokenFile(data.below("token"), "secret");
    struct stat status = {};
    ASSERT_EQ(::stat(data.below("token").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0600u);
    EXPECT_EQ(content(data.below("token")), "secret\n");
    expectError(ExitCode::Failed, "no/token",
                [&] { centre::writeTokenFile(data.below("no/token"), "secret"); });
}

} // namespace
