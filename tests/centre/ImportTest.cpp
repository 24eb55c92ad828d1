#include "centre/Import.h"
#include "tests/centre/CentreSupport.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>

#include <map>

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

namespace {

class Import : public testing::Test
{
protected:
    centre::ImportReport import(const std::string& box = {})
    {
        m_Problems.clear();
        return centre::importTree(m_Store, {m_Data.below("tree"), "disk", "LUMO", box},
                                  [this](const std::string& problem) { m_Problems.push_back(problem); });
    }

    /// The catalogue as paths below the disk with their identifiers; folders end with "/".
    std::map<std::string, unsigned> catalogue()
    {
        std::map<std::string, unsigned> paths;
        SQLite::Statement rows(
            m_Store.database(),
            "WITH RECURSIVE tree(id, path) AS (SELECT id, '/' FROM folder WHERE parent_id = 0"
            " UNION ALL SELECT folder.id, path || name || '/' FROM tree JOIN folder"
            " ON parent_id = tree.id)"
            " SELECT path, id FROM tree UNION ALL"
            " SELECT path || name, file.id FROM tree JOIN file ON parent_id = tree.id");
        while (rows.executeStep())
            paths[rows.getColumn(0).getString()] = rows.getColumn(1).getUInt();
        return paths;
    }

    DataFolder m_Data;
    centre::Store m_Store{m_Data.path()};
    std::vector<std::string> m_Problems;
};

TEST_F(Import, RegistersFoldersAndFilesInTheOrderOfTheirNames)
{
    for (const char* name : {"tree/b.tif", "tree/a/two.tif", "tree/a/one.tif", "tree/中文/名 字.tif"})
        m_Data.makeFile(name);
    fs::create_directories(m_Data.below("tree/empty"));
    const centre::ImportReport report = import();
    EXPECT_TRUE(report.diskIsNew);
    EXPECT_EQ(report.rootPath, fs::canonical(m_Data.below("tree")).string());
    EXPECT_THAT(catalogue(), ElementsAre(Pair("/", 1), Pair("/a/", 2), Pair("/a/one.tif", 2),
                                         Pair("/a/two.tif", 3), Pair("/b.tif", 1), Pair("/empty/", 3),
                                         Pair("/中文/", 4), Pair("/中文/名 字.tif", 4)));
    EXPECT_EQ(report.newFolders, 3u);
    EXPECT_EQ(report.newFiles, 4u);
}

TEST_F(Import, DoesNotFollowLinksAndTellsNamesThatAreNotUtf8)
{
    m_Data.makeFile("tree/good");
    m_Data.makeFile("tree/bad\xff\nname");
    m_Data.makeFile("tree/\xc3(/hidden");
    fs::create_directory_symlink(m_Data.below(""), m_Data.below("tree/up"));
    fs::create_symlink("nowhere", m_Data.below("tree/dangling"));
    const centre::ImportReport report = import();
    EXPECT_EQ(report.skipped, 2u);
    EXPECT_EQ(report.problems, 2u);
    EXPECT_THAT(m_Problems,
                testing::UnorderedElementsAre(HasSubstr("tree/bad\\xff\\x0aname"), HasSubstr("tree/\\xc3(")));
    EXPECT_THAT(catalogue(), ElementsAre(Pair("/", 1), Pair("/good", 1)));
}

TEST_F(Import, AgainAddsWhatIsNewAndKeepsIdentifiers)
{
    for (const char* name : {"tree/a/one", "tree/m/two"})
        m_Data.makeFile(name);
    import();
    auto expected = catalogue();
    m_Data.makeFile("tree/a/another");
    m_Data.makeFile("tree/k/three");
    fs::remove(m_Data.below("tree/m/two"));
    const centre::ImportReport report = import();
    expected.insert({{"/a/another", 3}, {"/k/", 4}, {"/k/three", 4}});
    EXPECT_EQ(catalogue(), expected);
    EXPECT_FALSE(report.diskIsNew);
    EXPECT_EQ(report.newFolders, 1u);
    EXPECT_EQ(report.knownFolders, 2u);
    EXPECT_EQ(report.newFiles, 2u);
    EXPECT_EQ(report.knownFiles, 1u);
}

TEST_F(Import, RefusesWhatCannotBeADisk)
{
    m_Data.makeFile("tree/file");
    m_Data.makeFile("other/file");
    import();
    const struct
    {
        centre::ImportOptions options;
        const char* reason;
    } cases[] = {
        {{m_Data.below("missing"), "new", "LUMO", ""}, "No such file"},
        {{m_Data.below("tree/file"), "new", "LUMO", ""}, "not a folder"},
        {{m_Data.below("other"), "disk", "LUMO", ""}, "shows"},
        {{m_Data.below("other"), "new", "NONE", ""}, "no company NONE"},
        {{m_Data.below("other"), "new", "LUMO", "B9"}, "no box B9"},
        {{m_Data.below("other"), "", "LUMO", ""}, "must not be empty"},
        {{m_Data.below("other"), "a/b", "LUMO", ""}, "can't be a/b"},
        {{m_Data.below("other"), "n\xff", "LUMO", ""}, "n\\xff"},
    };
    const auto before = catalogue();
    for (const auto& each : cases) {
        try {
            centre::importTree(m_Store, each.options, {});
            ADD_FAILURE() << each.reason;
        } catch (const centre::Error& error) {
            EXPECT_THAT(error.what(), HasSubstr(each.reason));
        }
    }
    EXPECT_EQ(catalogue(), before);
}

TEST_F(Import, ABoxCanBeGivenLater)
{
    m_Data.makeFile("tree/file");
    m_Store.addBox("B1", "127.0.0.1:1");
    import();
    import("B1");
    import();
    EXPECT_EQ(m_Store.database().execAndGet("SELECT kesta_code FROM disk").getString(), "B1");
}

} // namespace
