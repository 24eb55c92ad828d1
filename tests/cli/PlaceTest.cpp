#include "cli/Place.h"
#include "cli/ExitCode.h"

#include <gmock/gmock.h>

namespace {

using cli::parsePlace;
using cli::Place;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(Place, PathGivesItsComponentsAndNothingElseOfIt)
{
    EXPECT_THAT(parsePlace("/").components, IsEmpty());
    EXPECT_THAT(parsePlace("/earth/影像/a b:1.tif").components, ElementsAre("earth", "影像", "a b:1.tif"));
    EXPECT_THAT(parsePlace("//earth///x").components, ElementsAre("earth", "x"));
    EXPECT_THAT(parsePlace("/earth/../x").components, ElementsAre("earth", "..", "x"));
    EXPECT_FALSE(parsePlace("/earth/x").folderOnly);
    EXPECT_TRUE(parsePlace("/earth/x/").folderOnly);
}

TEST(Place, IdentifierGivesKindAndNumber)
{
    EXPECT_EQ(parsePlace("disk:1").kind, Place::Kind::Disk);
    EXPECT_EQ(parsePlace("folder:0").kind, Place::Kind::Folder);
    EXPECT_EQ(parsePlace("file:33").kind, Place::Kind::File);
    EXPECT_EQ(parsePlace("file:4294967294").id, 4294967294U);
}

TEST(Place, AnythingElseIsWrongUseAndTheMessageTellsTheForms)
{
    for (const char* text :
         {"", "earth", "earth/x", "disk", "disk:", "disk:x", "disk:1x", "disk:-1", "disk: 1", "Disk:1",
          "image:1", "file:4294967295", "file:99999999999", "/\xff", "/\xed\xa0\x80"}) {
        try {
            parsePlace(text);
            ADD_FAILURE() << text;
        } catch (const cli::Failure& failure) {
            EXPECT_EQ(failure.code(), cli::ExitCode::WrongUse) << text;
            EXPECT_THAT(failure.what(), HasSubstr("disk:1, folder:12 or file:33"));
        }
    }
}

TEST(Place, ShownIdentifierIsReadBack)
{
    EXPECT_EQ(parsePlace(cli::identifierText("folder", 12)).id, 12U);
    EXPECT_EQ(cli::identifierText("folder", 0xFFFFFFFF), "-");
}

} // namespace
