#include "centre/base/Token.h"
#include "centre/content/Version.h"
#include "centre/store/RecordKinds.h"
#include "tests/centre/CentreSupport.h"

#include <sys/stat.h>

using centre::ExitCode;

namespace {

TEST(Store, KeepsNoToken)
{
    DataFolder data;
    EXPECT_EQ(data.token().size(), 43u);
    const std::string second = centre::Store(data.path()).addUser("second", "LUMO");
    EXPECT_NE(second, data.token());
    for (const auto& entry : std::filesystem::directory_iterator(data.path()))
        for (const std::string& token : {data.token(), second})
            EXPECT_EQ(readFile(entry.path()).find(token), std::string::npos) << entry.path();
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

TEST(Store, BringsAnOlderDataFolderToItsTablesOrLeavesItAsItWas)
{
    DataFolder data;
    std::string makeOld = "DROP INDEX comment_record_record; DROP INDEX data_folder_folder;"
                          "DROP INDEX data_file_file; DROP TABLE comment; DROP TABLE image_comment;";
    const std::string versionThree = makeOld + "INSERT INTO image_mark VALUES (4, 6, 1), (4, 6, 2);"
                                               "INSERT INTO comment_record VALUES (9, 1, 4), (8, 1, 4);"
                                               "PRAGMA user_version = 3;";
    centre::Store(data.path()).database().exec(versionThree);
    {
        centre::Store store(data.path());
        EXPECT_EQ(store.database().execAndGet("SELECT id || commentcontent FROM image_comment").getString(),
                  "4mark 4");
        EXPECT_EQ(store.database().execAndGet("SELECT comment_id FROM comment_record").getInt(), 8);
    }
    makeOld += "DROP TABLE image_mark;";
    for (auto kind = centre::recordKinds().rbegin(); kind != centre::recordKinds().rend(); ++kind)
        makeOld += "DROP TABLE " + kind->name + ";" +
                   (kind->hasType() ? "DROP TABLE " + kind->name + "_bounds;" : "");
    centre::Store(data.path()).database().exec(makeOld + "PRAGMA user_version = 2;");
    centre::Store(data.path())
        .database()
        .exec("INSERT INTO project(company_id, project_name) VALUES (1, 'P')");
    makeOld += "DROP TABLE version; DROP TABLE national_area; DROP INDEX disk_root;"
               "ALTER TABLE user DROP COLUMN may_write; PRAGMA user_version = 1;";
    centre::Store(data.path()).database().exec(makeOld);
    centre::Store store(data.path());
    EXPECT_EQ(store.database().execAndGet("PRAGMA user_version").getInt(), 4);
    EXPECT_EQ(store.database().execAndGet("SELECT username || may_write FROM user").getString(), "demo1");
    store.addArea(1, "area");

    store.database().exec(makeOld + "CREATE TABLE version(in_the_way)");
    EXPECT_THROW(centre::Store(data.path()), SQLite::Exception);
    EXPECT_EQ(store.database().execAndGet("PRAGMA user_version").getInt(), 1);
    EXPECT_THROW(store.database().execAndGet("SELECT may_write FROM user"), SQLite::Exception);
}

TEST(Version, NumbersAreInTheirNaturalOrder)
{
    const std::vector<std::string> order = {"r1",       "r2",
                                            "中",       "0.9",
                                            "1-beta",   "1",
                                            "1.2-rc1",  "1.2-rc2",
                                            "1.2-rc10", "1.2",
                                            "1.2a",     "1.2b",
                                            "1.2.x",    "1.2.1",
                                            "1.9",      "1.10",
                                            "2",        "2.0",
                                            "2.0.1",    "10",
                                            "2026.1",   "20260101000000000000000"};
    std::vector<std::string> places;
    for (const std::string& version : order)
        places.push_back(centre::versionPlace(version));
    for (std::size_t i = 1; i < places.size(); ++i)
        EXPECT_LT(places[i - 1], places[i]) << order[i - 1] << " and " << order[i];
    EXPECT_EQ(centre::versionPlace("01.002"), centre::versionPlace("1.2"));
}

TEST(Version, RefusesWhatCannotBeOne)
{
    DataFolder data;
    data.makeFile("package");
    centre::Store store(data.path());
    store.addBox("B1", "127.0.0.1:1");
    const centre::Version good{
        centre::VersionKind::Program, "P", "1.0", data.below("package"), "B1", "", "", ""};
    addVersion(store, good);
    const struct
    {
        std::string centre::Version::*member;
        std::string value;
        const char* reason;
        ExitCode code = ExitCode::WrongUse;
    } cases[] = {
        {&centre::Version::version, "1.00", "or an equal one, already", ExitCode::Failed},
        {&centre::Version::version, "", "must not be empty"},
        {&centre::Version::version, std::string(201, '1'), "too long"},
        {&centre::Version::number, "\n", "\\x0a"},
        {&centre::Version::path, data.below("missing"), "No such file", ExitCode::Failed},
        {&centre::Version::path, "/dev/null", "a file or a folder"},
        {&centre::Version::path, "/", "not a path"},
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
        expectError(each.code, each.reason, [&] { addVersion(store, version); });
    }
    EXPECT_EQ(store.database().execAndGet("SELECT count(*) FROM version").getInt(), 1);
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
