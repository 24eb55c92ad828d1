#include "tests/centre/CentreSupport.h"

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

namespace {

class Import : public CentreTest
{
protected:
    using CentreTest::import;
    centre::ImportReport import() { return import("tree", "disk"); }
};

TEST_F(Import, RegistersFoldersAndFilesInTheOrderOfTheirNames)
{
    for (const char* name : {"tree/b.tif", "tree/a/two.tif", "tree/a/one.tif", "tree/中文/名 字.tif"})
        m_Data.makeFile(name);
    fs::create_directories(m_Data.below("tree/empty"));
    const centre::ImportReport report = import();
    EXPECT_TRUE(report.diskIsNew);
    EXPECT_EQ(report.rootPath, fs::canonical(m_Data.below("tree")).string());
    EXPECT_THAT(catalogueOf(m_Store),
                ElementsAre(Pair("disk/", 1), Pair("disk/a/", 2), Pair("disk/a/one.tif", 1),
                            Pair("disk/a/two.tif", 2), Pair("disk/b.tif", 3), Pair("disk/empty/", 3),
                            Pair("disk/中文/", 4), Pair("disk/中文/名 字.tif", 4)));
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
    EXPECT_EQ(report.notServed.text(), "2 links, 2 refused names");
    EXPECT_EQ(report.problems, 2u);
    EXPECT_THAT(m_Problems,
                testing::UnorderedElementsAre(HasSubstr("tree/bad\\xFF\\nname"), HasSubstr("tree/\\xC3(")));
    EXPECT_THAT(catalogueOf(m_Store), ElementsAre(Pair("disk/", 1), Pair("disk/good", 1)));
}

TEST_F(Import, AgainAddsWhatIsNewAndKeepsIdentifiers)
{
    for (const char* name : {"tree/a/one", "tree/m/two"})
        m_Data.makeFile(name);
    import();
    auto expected = catalogueOf(m_Store);
    m_Data.makeFile("tree/a/another");
    m_Data.makeFile("tree/k/three");
    fs::remove(m_Data.below("tree/m/two"));
    const centre::ImportReport report = import();
    expected.insert({{"disk/a/another", 3}, {"disk/k/", 4}, {"disk/k/three", 4}});
    EXPECT_EQ(catalogueOf(m_Store), expected);
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
    m_Data.makeFile("data/inside/file");
    fs::create_directory_symlink("data", m_Data.below("link"));
    import();
    const struct
    {
        centre::ImportOptions options;
        const char* reason;
        centre::ExitCode code = centre::ExitCode::WrongUse;
    } cases[] = {
        {{m_Data.below("missing"), "new", "LUMO", ""}, "No such file", centre::ExitCode::Failed},
        {{m_Data.below("tree/file"), "new", "LUMO", ""}, "not a folder"},
        {{m_Data.below("other"), "disk", "LUMO", ""}, "shows", centre::ExitCode::Failed},
        {{m_Data.below("other"), "new", "NONE", ""}, "no company NONE", centre::ExitCode::Failed},
        {{m_Data.below("other"), "new", "LUMO", "B9"}, "no box B9", centre::ExitCode::Failed},
        {{m_Data.below("other"), "", "LUMO", ""}, "must not be empty"},
        {{m_Data.below("other"), "a/b", "LUMO", ""}, "can't be a/b"},
        {{m_Data.below("other"), "n\xff", "LUMO", ""}, "n\\xFF"},
        {{m_Data.path(), "new", "LUMO", ""}, "the data folder"},
        {{m_Data.path() + "/inside", "new", "LUMO", ""}, "the data folder"},
        {{m_Data.below("."), "new", "LUMO", ""}, "the data folder"},
        {{m_Data.below("link"), "new", "LUMO", ""}, "the data folder"},
        {{"/", "new", "LUMO", ""}, "the data folder"},
    };
    const auto before = catalogueOf(m_Store);
    for (const auto& each : cases)
        if (postgresql() == nullptr || std::string(each.reason) != "the data folder")
            expectError(each.code, each.reason, [&] { centre::importTree(m_Store, each.options); });
    EXPECT_EQ(catalogueOf(m_Store), before);
}

TEST_F(Import, ABoxCanBeGivenLater)
{
    m_Data.makeFile("tree/file");
    m_Store.addBox("B1", "127.0.0.1:1");
    import();
    import("tree", "disk", "LUMO", "B1");
    import();
    EXPECT_EQ(value("SELECT kesta_code FROM disk"), "B1");
}

} // namespace
