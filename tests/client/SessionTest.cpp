#include "tests/client/ClientCentre.h"

#include <functional>
#include <optional>

namespace {

using Kind = lumo::Error::Kind;
using lumo::Session;

TEST_F(ClientCentre, CannotBeLoggedInToWithWrongSettings)
{
    serve({});
    const struct
    {
        const char* what;
        std::function<void(Session::Settings&)> change;
        Kind kind;
    } kCases[] = {
        {"no address", [](auto& settings) { settings.centre.clear(); }, Kind::WrongUse},
        {"not an address", [](auto& settings) { settings.centre = "localhost"; }, Kind::WrongUse},
        {"nobody there", [](auto& settings) { settings.centre = "127.0.0.1:1"; }, Kind::NotReached},
        {"no such token", [](auto& settings) { settings.token = "wrong"; }, Kind::TokenRefused},
        {"token in the open",
         [](auto& settings) { settings.centre = "192.0.2.1:7400", settings.plainText = true; },
         Kind::TokenRefused},
        {"no such token file",
         [](auto& settings) { settings.token.clear(), settings.tokenFile = "/nonexistent"; }, Kind::WrongUse},
        {"no such company", [](auto& settings) { settings.company = "X"; }, Kind::UnknownCompany},
        {"no such user", [](auto& settings) { settings.user = "X"; }, Kind::UnknownUser},
        {"two wishes", [](auto& settings) { settings.plainText = settings.tls = true; }, Kind::WrongUse},
        {"no such code page", [](auto& settings) { settings.codePage = "latin1"; }, Kind::WrongUse},
    };
    for (const auto& one : kCases) {
        Session::Settings changed = settings();
        one.change(changed);
        EXPECT_EQ(errorOf([&] { Session session(changed); }), one.kind) << one.what;
    }
    EXPECT_EQ(errorOf([&] { Session session(settings()); }), std::nullopt) << "after all failures";
}

TEST_F(ClientCentre, HasOneSessionAtATimeAndHandlesThatOutliveIt)
{
    serve({"a.txt"});
    std::optional<Session> session(settings());
    const lumo::Catalogue catalogue = session->catalogue();
    EXPECT_EQ(catalogue.disks().size(), 1U);
    EXPECT_EQ(errorOf([&] { Session second(settings()); }), Kind::Busy);
    EXPECT_EQ(catalogue.find("/earth/a.txt").name, "a.txt") << "the first goes on";
    session->close();
    session->close();
    EXPECT_EQ(errorOf([&] { catalogue.disks(); }), Kind::Closed);
    session.reset();
    EXPECT_EQ(errorOf([&] { catalogue.find("/earth"); }), Kind::Closed);
    session.emplace(settings());
    EXPECT_EQ(session->catalogue().disks().size(), 1U);
}

TEST_F(ClientCentre, FindsPlacesAndSaysWhatIsMissing)
{
    serve({"a.txt", "z.txt", "影像/deep/b.tif"});
    for (const std::string table : {"folder", "file"})
        m_Store.database().execute("UPDATE " + table + " SET short_text = 'short', long_text = 'long'");
    m_Store.database().execute("UPDATE file SET name = 'cut' || char(0) || 'off' WHERE name = 'z.txt'");
    const Session session(settings());
    const lumo::Catalogue catalogue = session.catalogue();
    const lumo::Entry disk = catalogue.find("/earth");
    const lumo::Entry deep = catalogue.find("/earth//影像/deep/");
    const lumo::Entry file = catalogue.find("/earth/影像/deep/b.tif");
    EXPECT_EQ(disk.kind, lumo::Entry::Kind::Disk);
    EXPECT_EQ(disk.box, "B1");
    EXPECT_EQ(deep.kind, lumo::Entry::Kind::Folder);
    EXPECT_EQ(file.kind, lumo::Entry::Kind::File);
    for (const lumo::Entry& entry : {deep, file})
        EXPECT_EQ(entry.shortText.value_or("") + " " + entry.longText.value_or(""), "short long");
    EXPECT_EQ(catalogue.find(file.file).name, "b.tif");
    EXPECT_EQ(catalogue.find("folder:" + std::to_string(deep.folder.number())).name, "deep");
    EXPECT_EQ(catalogue.pathOf(file), "/earth/影像/deep/b.tif");
    EXPECT_EQ(catalogue.diskOf(file).disk, disk.disk);
    EXPECT_EQ(catalogue.folders(catalogue.folderOf(disk)).front().name, "影像");
    EXPECT_EQ(catalogue.files(catalogue.folderOf(disk)).front().name, "a.txt");
    EXPECT_EQ(catalogue.files(catalogue.folderOf(disk)).back().name, "cut") << "a name ends at a NUL";
    EXPECT_EQ(catalogue.findPart("/earth/影像/x/y").missing, "x/y");

    const lumo::FolderId made = catalogue.makeFolder(deep, "new/er");
    EXPECT_EQ(catalogue.pathOf(catalogue.find(made)), "/earth/影像/deep/new/er");

    const struct
    {
        const char* place;
        Kind kind;
    } kCases[] = {{"/mars", Kind::NotFound},           {"/earth/x", Kind::NotFound},
                  {"/earth/a.txt/", Kind::NotFound},   {"/earth/a.txt/b", Kind::NotFound},
                  {"file:4000000", Kind::NotFound},    {"/", Kind::WrongUse},
                  {"earth", Kind::WrongUse},           {"disk:", Kind::WrongUse},
                  {"file:4294967295", Kind::WrongUse}, {"/\xff", Kind::WrongUse}};
    for (const auto& one : kCases)
        EXPECT_EQ(errorOf([&] { catalogue.find(one.place); }), one.kind) << one.place;
    EXPECT_EQ(errorOf([&] { catalogue.findPart("/mars/x"); }), Kind::NotFound);
}

TEST_F(ClientCentre, FailureHasItsOperationAndItsReason)
{
    serve({"a.txt"}, {"queryDataAddressByName=result:-2"});
    const Session session(settings());
    try {
        session.catalogue().find("/earth");
        ADD_FAILURE() << "nothing thrown";
    } catch (const lumo::Error& error) {
        EXPECT_EQ(error.kind(), Kind::Refused);
        EXPECT_NE(error.operation(), "");
        EXPECT_NE(error.reason().find("the centre reported an error"), std::string::npos);
        EXPECT_NE(std::string(error.what()).find(error.reason()), std::string::npos);
    }
}

} // namespace
