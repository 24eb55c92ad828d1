#include "centre/image/QuickLooks.h"
#include "tests/support/Files.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <filesystem>
#include <thread>

namespace fs = std::filesystem;

namespace {

using namespace centre;

/// Copies of an image in a folder, and quick looks of them in another.
class QuickLooksTest : public testing::Test
{
protected:
    std::string below(const std::string& name) const { return m_Place.path().toStdString() + "/" + name; }
    bulkhaul::Folder images() const { return bulkhaul::Folder::open(below("images")); }
    void makeImage(const std::string& name) const
    {
        writeFile(below("images/" + name), readFile(LUMO_SAMPLES "/imagery/east-asia.jpg"));
    }
    QuickLookOptions options(std::uint64_t bytes = 1 << 20) const { return {below("kept"), bytes, 64}; }

    /// Whether an image had to be read for a quick look.
    bool isMade(const std::string& name, std::string* data = nullptr) const
    {
        ImageReader reader;
        const QuickLook look = QuickLooks(reader, options()).get(images(), name);
        EXPECT_EQ(look.mediaType, "image/jpeg");
        EXPECT_EQ(look.data.substr(0, 3), "\xff\xd8\xff");
        if (data != nullptr)
            *data = look.data;
        return !reader.idle().empty();
    }
    std::string keptFile(const std::string& name) const
    {
        ImageReader reader;
        return below("kept/" + QuickLooks(reader, options()).tag(images(), name));
    }

    QTemporaryDir m_Place;
};

TEST_F(QuickLooksTest, AreKeptUntilTheImageChanges)
{
    makeImage("a.jpg");
    std::string first;
    std::string second;
    EXPECT_TRUE(isMade("a.jpg", &first));
    EXPECT_FALSE(isMade("a.jpg", &second));
    EXPECT_EQ(first, second);

    const std::string kept = readFile(keptFile("a.jpg"));
    for (const std::string& damaged :
         {kept.substr(0, kept.size() - 1), "x" + kept.substr(1), std::string()}) {
        writeFile(keptFile("a.jpg"), damaged);
        EXPECT_TRUE(isMade("a.jpg", &second));
        EXPECT_EQ(first, second);
    }
    const auto time = fs::last_write_time(below("images/a.jpg"));
    std::string changed = readFile(below("images/a.jpg"));
    changed.insert(2, std::string("\xff\xfe\0\x03x", 5)); // a comment
    writeFile(below("images/a.jpg"), changed);
    EXPECT_TRUE(isMade("a.jpg"));
    makeImage("b.jpg");
    fs::rename(below("images/b.jpg"), below("images/a.jpg"));
    fs::last_write_time(below("images/a.jpg"), time);
    EXPECT_TRUE(isMade("a.jpg"));
    EXPECT_FALSE(isMade("a.jpg"));

    writeFile(below("images/a.jpg"), "no image");
    EXPECT_THROW(isMade("a.jpg"), Error);
}

TEST_F(QuickLooksTest, ThoseThatWereNotUsedForTheLongestTimeGo)
{
    constexpr std::uint64_t kBytes = 20480; // five pictures
    ImageReader reader;
    QuickLooks looks(reader, options(kBytes));
    writeFile(below("kept/not of the centre"), std::string(2 * kBytes, 'x'));
    for (const std::string name : {"0", "1", "2", "3", "4"}) {
        makeImage(name);
        ASSERT_LT(looks.get(images(), name).data.size(), 4000u);
        fs::last_write_time(keptFile(name),
                            fs::file_time_type::clock::now() - std::chrono::hours(10 - name[0] + '0'));
    }
    looks.get(images(), "0");
    makeImage("5");
    looks.get(images(), "5");
    EXPECT_TRUE(fs::exists(keptFile("0")));
    EXPECT_FALSE(fs::exists(keptFile("1")));
    EXPECT_TRUE(fs::exists(keptFile("2")));
    EXPECT_TRUE(fs::exists(below("kept/not of the centre")));
}

TEST_F(QuickLooksTest, ServeThreadsOfSeveralProcessesWithinTheirBound)
{
    constexpr std::uint64_t kBytes = 16384; // four pictures
    ImageReader reader;
    QuickLooks looks[] = {{reader, options(kBytes)}, {reader, options(kBytes)}}; // as two processes have it
    for (const std::string name : {"0", "1", "2", "3", "4", "5", "6", "7"})
        makeImage(name);
    const std::string expected = looks[0].get(images(), "0").data;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread)
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 40; ++i)
                EXPECT_EQ(looks[thread % 2].get(images(), std::to_string((thread / 2 + i) % 8)).data,
                          expected);
        });
    for (std::thread& thread : threads)
        thread.join();
    std::uint64_t kept = 0;
    for (const auto& file : fs::directory_iterator(below("kept"))) {
        EXPECT_EQ(file.path().filename().string().size(), 32u);
        kept += 4096;
    }
    EXPECT_LE(kept, kBytes);
}

} // namespace
