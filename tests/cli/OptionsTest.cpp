#include "cli/Options.h"
#include "cli/ExitCode.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

using testing::HasSubstr;

TEST(Timeout, TakesAWholeNumberAndAUnit)
{
    EXPECT_EQ(cli::parseTimeout("500ms"), 500U);
    EXPECT_EQ(cli::parseTimeout("500"), 500U);
    EXPECT_EQ(cli::parseTimeout("10s"), 10000U);
    EXPECT_EQ(cli::parseTimeout("2m"), 120000U);
    EXPECT_EQ(cli::parseTimeout("0"), 0U);
    for (const char* text : {"", "s", "10 s", "-1", "1.5s", "10h", "4294968s", "99999999999"})
        EXPECT_THROW(cli::parseTimeout(text), cli::Failure) << text;
}

class Profile : public testing::Test
{
protected:
    void SetUp() override
    {
        m_Path = testing::TempDir() + "lumo-profile-" +
                 testing::UnitTest::GetInstance()->current_test_info()->name() + ".ini";
        unsetenv("LUMO_USER");
        unsetenv("LUMO_CENTRE");
        cli::addOptions(m_App, m_Options);
    }
    void TearDown() override { std::filesystem::remove(m_Path); }

    void read(const std::string& profile, const std::string& commandLine = "")
    {
        std::ofstream(m_Path) << profile;
        m_App.parse("--profile " + m_Path + " " + commandLine);
        cli::applyProfile(m_App, m_Options);
    }

    std::string m_Path;
    CLI::App m_App;
    cli::Options m_Options;
};

TEST_F(Profile, FillsWhatCommandLineAndEnvironmentLeaveOpen)
{
    setenv("LUMO_USER", "from environment", 1);
    setenv("LUMO_CENTRE", "environment:1", 1);
    read("centre = profile:1\nuser = from profile\ncompany = C-1\ntls = true\n", "--centre line:1");
    EXPECT_EQ(m_Options.centre, "line:1");
    EXPECT_EQ(m_Options.user, "from environment");
    EXPECT_EQ(m_Options.company, "C-1");
    EXPECT_TRUE(m_Options.tls);
    EXPECT_FALSE(m_Options.json);
}

TEST_F(Profile, ValueIsAllBehindTheEqualsSign)
{
    read("; a comment\n# another\n[default]\nuser = 张 三, [a] # b\ntoken-file=/a=b\ntls = false\n");
    EXPECT_EQ(m_Options.user, "张 三, [a] # b");
    EXPECT_EQ(m_Options.tokenFile, "/a=b");
    EXPECT_FALSE(m_Options.tls);
}

TEST_F(Profile, UnknownSettingOrBadValueIsWrongUseThatNamesIt)
{
    for (const char* line : {"centr = x:1", "help = true", "profile = x", "[section]\nuser = x",
                             "tls = perhaps", "code-page = big5"}) {
        const std::string text = line;
        const std::string name = text[0] == '[' ? "section.user" : text.substr(0, text.find(' '));
        CLI::App app;
        cli::Options options;
        cli::addOptions(app, options);
        std::ofstream(m_Path) << text << "\n";
        app.parse("--profile " + m_Path);
        try {
            cli::applyProfile(app, options);
            ADD_FAILURE() << text;
        } catch (const cli::Failure& failure) {
            EXPECT_EQ(failure.code(), cli::ExitCode::WrongUse);
            EXPECT_THAT(failure.what(), HasSubstr(name));
            EXPECT_THAT(failure.what(), HasSubstr(m_Path));
        }
    }
}

TEST_F(Profile, FileThatIsNamedMustBeThere)
{
    m_App.parse("--profile /nowhere/profile.ini");
    EXPECT_THROW(cli::applyProfile(m_App, m_Options), cli::Failure);
}

} // namespace
