#include "cli/output/Records.h"

#include "lumo/client/Error.h"
#include "lumo/client/Place.h"
#include "lumo/client/Session.h"

#include <gtest/gtest.h>

namespace {

TEST(Timeout, TakesAWholeNumberAndAUnit)
{
    EXPECT_EQ(lumo::Session::Settings::milliseconds("500ms"), 500U);
    EXPECT_EQ(lumo::Session::Settings::milliseconds("500"), 500U);
    EXPECT_EQ(lumo::Session::Settings::milliseconds("10s"), 10000U);
    EXPECT_EQ(lumo::Session::Settings::milliseconds("2m"), 120000U);
    EXPECT_EQ(lumo::Session::Settings::milliseconds("0"), 0U);
    for (const char* text : {"", "s", "10 s", "-1", "1.5s", "10h", "4294968s", "99999999999"})
        EXPECT_THROW(lumo::Session::Settings::milliseconds(text), lumo::Error) << text;
}

TEST(Place, IsShownAsItIsReadOrAsAbsent)
{
    EXPECT_EQ(lumo::Place(cli::identifierText("folder", 12)).number(), 12U);
    EXPECT_EQ(cli::identifierText("folder", 0xFFFFFFFF), "-");
}

} // namespace
