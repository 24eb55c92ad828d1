#include "centre/base/Token.h"
#include "centre/content/Version.h"
#include "centre/store/Connection.h"
#include "tests/centre/CentreProgram.h"
#include "tests/centre/CentreSupport.h"

#include <sys/stat.h>

using centre::ExitCode;

namespace {

class Store : public CentreTest
{
protected:
    centre::Store newStore() { return centre::Store(m_Data.below("new")); }
    centre::Store reopened() { return centre::Store(m_Data.path()); }
};

TEST_F(Store, KeepsNoToken)
{
    ONLY_WITH_A_DATA_FOLDER();
    EXPECT_EQ(m_Data.token().size(), 43u);
    const std::string second = m_Store.addUser("second", "LUMO");
    EXPECT_NE(second, m_Data.token());
    for (const auto& entry : std::filesystem::directory_iterator(m_Data.path()))
        for (const std::string& token : {m_Data.token(), second})
            EXPECT_EQ(readFile(entry.path()).find(token), std::string::npos) << entry.path();
}

TEST_F(Store, RefusesNamesThatAreTakenOrCannotBe)
{
    m_Store.addBox("B1", "127.0.0.1:1");
    expectError(ExitCode::Failed, "company LUMO exists already", [&] { m_Store.addCompany("LUMO"); });
    expectError(ExitCode::Failed, "user demo exists already", [&] { m_Store.addUser("demo", "LUMO"); });
    expectError(ExitCode::Failed, "box B1 exists already", [&] { m_Store.addBox("B1", "127.0.0.1:2"); });
    expectError(ExitCode::Failed, "no company X", [&] { m_Store.addUser("other", "X"); });
    expectError(ExitCode::WrongUse, "HOST:PORT", [&] { m_Store.addBox("B2", "host"); });
    expectError(ExitCode::WrongUse, "must not be empty", [&] { m_Store.addCompany(""); });
    expectError(ExitCode::WrongUse, "a\\nb", [&] { m_Store.addUser("a\nb", "LUMO"); });
}

TEST_F(Store, IsMadeOnceAndWholeAndOpenedOnlyByItsOwnProgram)
{
    ONLY_WITH_A_DATA_FOLDER();
    const auto create = [this](const char* name, const char* user) {
        centre::Store::create(m_Data.below(name), "N", user);
    };
    expectError(ExitCode::NoDataFolder, "already", [&] { create("data", "demo"); });
    expectError(ExitCode::WrongUse, "user name", [&] { create("new", ""); });
    expectError(ExitCode::NoDataFolder, "lumo-centre init", [this] { newStore(); });
    create("new", "user");
    EXPECT_EQ(newStore().companyId("N"), 1u);

    m_Store.database().execute("PRAGMA user_version = 99");
    expectError(ExitCode::NoDataFolder, "newer lumo-centre", [this] { reopened(); });
    m_Store.database().execute("PRAGMA application_id = 1");
    expectError(ExitCode::NoDataFolder, "not a database of", [this] { reopened(); });
    expectError(ExitCode::NoDataFolder, "of another program", [&] { create("data", "demo"); });
}

TEST_F(Store, AConnectionForgetsWhatAnyProcessHasChanged)
{
    ONLY_WITH_A_DATA_FOLDER(); // a server does not report changes, see PostgresDatabase::state
    m_Store.addBox("B1", "127.0.0.1:1");
    m_Data.makeFile("tree/inner/file");
    import("tree", "outer", "LUMO", "B1");
    centre::Connection connection(m_Data.path());
    const auto lookUp = [&] {
        std::string reason;
        const auto user = connection.user(m_Data.token(), reason);
        const auto root = centre::findServedRoot(connection, 1, "B1", m_Data.below("tree/inner/file"),
                                                 centre::Access::Read);
        const centre::FolderPath* folder = connection.folderPath(2);
        const std::size_t start = m_Data.below("").size();
        return (user ? user->name : "nobody") + ", served from " + root->path.substr(start) + ", folder " +
               folder->path.substr(start) + " of " + folder->box.value_or("no box");
    };
    const auto read = [&] {
        const centre::Read oneState(connection);
        return lookUp();
    };
    EXPECT_EQ(read(), "demo, served from tree, folder tree/inner of B1");
    Process other(centreCommand(
        {"import", m_Data.path(), m_Data.below("tree/inner"), "--disk", "inner", "--box", "B1"}));
    ASSERT_EQ(other.wait(), 0);
    EXPECT_EQ(read(), "demo, served from tree/inner, folder tree/inner of B1");
    m_Store.database().execute(
        "UPDATE user SET username = 'other'; UPDATE folder SET name = 'new' WHERE id = 2");
    EXPECT_EQ(read(), "other, served from tree/inner, folder tree/new of B1");

    // Its own changes: one that comes to nothing, and one that is committed.
    connection.database().execute("BEGIN; UPDATE folder SET name = 'never' WHERE id = 2");
    EXPECT_EQ(lookUp(), "other, served from tree/inner, folder tree/never of B1");
    connection.database().execute("ROLLBACK");
    EXPECT_EQ(read(), "other, served from tree/inner, folder tree/new of B1");
    connection.database().execute(
        "UPDATE disk SET kesta_code = NULL WHERE name = 'outer'; DELETE FROM token");
    EXPECT_EQ(read(), "nobody, served from tree/inner, folder tree/new of no box");
}

TEST(Version, NumbersAreInTheirNaturalOrder)
{
    std::istringstream order(
        "r1 r2 中 0.9 1-beta 1 1.2-rc1 1.2-rc2 1.2-rc10 1.2 1.2a 1.2b 1.2.x 1.2.1 1.9 1.10 2 2.0"
        " 2.0.1 10 2026.1 20260101000000000000000");
    std::string before;
    for (std::string version; order >> version; before = version)
        EXPECT_LT(before.empty() ? "" : centre::versionPlace(before), centre::versionPlace(version))
            << version;
    EXPECT_EQ(centre::versionPlace("01.002"), centre::versionPlace("1.2"));
}

TEST_F(Store, RefusesVersionsThatCannotBe)
{
    m_Data.makeFile("package");
    m_Store.addBox("B1", "127.0.0.1:1");
    const centre::Version good{
        centre::VersionKind::Program, "P", "1.0", m_Data.below("package"), "B1", "", "", ""};
    addVersion(m_Store, good);
    const struct
    {
        std::string centre::Version::*member;
        std::string value;
        const char* reason;
        ExitCode code = ExitCode::WrongUse;
    } cases[] = {
        {&centre::Version::version, "1.00", "or an equal one, exists already", ExitCode::Failed},
        {&centre::Version::version, "", "must not be empty"},
        {&centre::Version::version, std::string(201, '1'), "too long"},
        {&centre::Version::number, "\n", "\\n"},
        {&centre::Version::path, m_Data.below("missing"), "No such file", ExitCode::Failed},
        {&centre::Version::path, "/dev/null", "a file or a folder"},
        {&centre::Version::path, "/", "not a valid path"},
        {&centre::Version::boxCode, "B2", "no such box", ExitCode::Failed},
        {&centre::Version::released, "2026-02-30", "YYYY-MM-DD"},
        {&centre::Version::released, "2024/01/02", "YYYY-MM-DD"},
        {&centre::Version::notes, "\xff", "UTF-8"},
    };
    for (const auto& each : cases) {
        centre::Version version = good;
        if (each.member != &centre::Version::version)
            version.version = "2.0";
        version.*each.member = each.value;
        expectError(each.code, each.reason, [&] { addVersion(m_Store, version); });
    }
    EXPECT_EQ(value("SELECT count(*) FROM version"), "1");
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
    EXPECT_EQ(readFile(data.below("token")), "secret\n");
    expectError(ExitCode::Failed, "no/token",
                [&] { centre::writeTokenFile(data.below("no/token"), "secret"); });
}

} // namespace
