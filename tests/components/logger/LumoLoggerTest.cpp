#include "lumo/components/logger/LumoLogger.h"

#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

CLumoLogger& logger()
{
    return *CLumoLogger::GetSinglePton();
}

void write(const std::string& entry)
{
    logger().write(entry.data(), static_cast<int>(entry.size()));
}

class LumoLogger : public testing::Test
{
protected:
    LumoLogger()
    {
        std::string name = (std::filesystem::temp_directory_path() / "lumo-logger-XXXXXX").string();
        m_Folder = mkdtemp(name.data());
    }
    ~LumoLogger() override
    {
        logger().toStandardError();
        std::filesystem::remove_all(m_Folder);
    }

    std::string path(const std::string& name) const { return (m_Folder / name).string(); }

    std::string content(const std::string& name) const
    {
        std::ostringstream text;
        text << std::ifstream(path(name), std::ios::binary).rdbuf();
        return text.str();
    }

    std::filesystem::path m_Folder;
};

TEST_F(LumoLogger, WritesEntriesUnchangedToStandardErrorByDefault)
{
    testing::internal::CaptureStderr();
    write("time\n [INFO] %d {} \xD6\xD0\r\n");
    logger().write("cut here", 3);
    for (const int length : {0, -1, INT_MIN})
        logger().write("no entry", length);
    logger().write(nullptr, 5);
    logger().toCallback({});
    write("discarded");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "time\n [INFO] %d {} \xD6\xD0\r\ncut");
}

TEST_F(LumoLogger, AppendsToAFileAndHasEachEntryThereAtOnce)
{
    std::ofstream(path("lumo.log")) << "old|";
    ASSERT_TRUE(logger().toFile(path("lumo.log")));
    write("one|");
    EXPECT_EQ(content("lumo.log"), "old|one|");
    write(std::string("a\0b", 3));
    EXPECT_EQ(content("lumo.log"), std::string("old|one|a\0b", 11));
}

TEST_F(LumoLogger, RotatesAtTheLimitAndKeepsTheNewestFiles)
{
    ASSERT_TRUE(logger().toFile(path("lumo.log"), 10, 2));
    for (const char* entry : {"entry 1\n", "entry 2\n", "entry 3\n", "entry 4\n"})
        write(entry);
    EXPECT_EQ(content("lumo.log"), "entry 4\n");
    EXPECT_EQ(content("lumo.1.log"), "entry 3\n");
    EXPECT_EQ(content("lumo.2.log"), "entry 2\n");
    EXPECT_FALSE(std::filesystem::exists(path("lumo.3.log")));
}

TEST_F(LumoLogger, KeepsItsDestinationWhenAFileCantBeOpenedAndDropsWhatACallbackThrows)
{
    std::vector<std::string> entries;
    logger().toCallback([&](const char* text, int length) {
        entries.emplace_back(text, static_cast<std::size_t>(length));
        throw std::runtime_error("full");
    });
    EXPECT_FALSE(logger().toFile(m_Folder.string()));
    EXPECT_FALSE(logger().toFile(path("lumo.log"), 0));
    EXPECT_NO_THROW(write("still here"));
    EXPECT_EQ(entries, std::vector<std::string>{"still here"});
}

TEST_F(LumoLogger, KeepsEntriesOfManyThreadsWholeWhileTheDestinationChanges)
{
    constexpr int kThreads = 4, kEntries = 500;
    std::map<std::string, int> seen; // no lock: the logger calls back one at a time
    const auto collect = [&](const char* text, int length) {
        ++seen[std::string(text, static_cast<std::size_t>(length))];
    };
    logger().toCallback(collect);
    std::vector<std::thread> writers;
    writers.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
        writers.emplace_back([thread] {
            const std::string entry(100, static_cast<char>('a' + thread));
            for (int i = 0; i < kEntries; ++i)
                write(entry);
        });
    }
    for (int i = 0; i < 50; ++i) {
        logger().toFile(path("lumo.log"));
        logger().toCallback(collect);
    }
    for (std::thread& writer : writers)
        writer.join();

    const std::string file = content("lumo.log");
    ASSERT_EQ(file.size() % 100, 0u);
    for (std::size_t at = 0; at < file.size(); at += 100)
        ++seen[file.substr(at, 100)];
    ASSERT_EQ(seen.size(), static_cast<std::size_t>(kThreads));
    for (const auto& [entry, count] : seen)
        EXPECT_EQ(count, kEntries) << entry;
}

} // namespace
