#include "centre/content/Prune.h"
#include "tests/centre/CentreSupport.h"

namespace fs = std::filesystem;

namespace {

class Prune : public CentreTest
{
protected:
    /// Registers files of which some are gone again: more than a transaction removes.
    Prune()
    {
        for (int i = 0; i < 2500; ++i)
            m_Data.makeFile("tree/a/" + std::to_string(10000 + i));
        m_Data.makeFile("tree/z");
        import("tree", "disk");
        fs::remove_all(m_Data.below("tree/a"));
    }

    /// Calls `meanwhile` when the walk is at the last file, and some files were removed.
    centre::PruneReport prune(const std::function<void()>& meanwhile)
    {
        centre::PruneOptions options;
        options.remove = true;
        options.removed = [](const centre::DiskEntry&) {};
        options.progress = [&](std::uint64_t entries) {
            if (entries == 2502)
                meanwhile();
        };
        return pruneDisk(m_Store, centre::findDisks(m_Store, {}).front(), options);
    }
};

TEST_F(Prune, LeavesWhatAppearsAgainMeanwhile)
{
    const centre::PruneReport report = prune([this] { m_Data.makeFile("tree/a/12499"); });
    EXPECT_EQ(report.files, 2499u);
    EXPECT_EQ(report.folders, 0u);
    EXPECT_THAT(catalogueOf(m_Store),
                testing::ElementsAre(testing::Key("disk/"), testing::Key("disk/a/"),
                                     testing::Key("disk/a/12499"), testing::Key("disk/z")));
}

TEST_F(Prune, StopsWhenTheDiskIsUnmountedMeanwhile)
{
    expectError(centre::ExitCode::Failed, "another folder", [this] {
        prune([this] {
            fs::rename(m_Data.below("tree"), m_Data.below("away"));
            fs::create_directory(m_Data.below("tree"));
        });
    });
    EXPECT_EQ(value("SELECT count(*) FROM file"), "501"); // what two transactions had left
}

} // namespace
