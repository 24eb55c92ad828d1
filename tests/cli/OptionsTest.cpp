#include "cli/Options.h"
#include "cli/ExitCode.h"
#include "cli/Place.h"

#include <gtest/gtest.h>

namespace {

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

TEST(Place, IsShownAsItIsReadOrAsAbsent)
{
    EXPECT_EQ(cli::parsePlace(cli::identifierText("folder", 12)).id, 12U);
    EXPECT_EQ(cli::identifierText("folder", 0xFFFFFFFF), "-");
}

} // namespace
