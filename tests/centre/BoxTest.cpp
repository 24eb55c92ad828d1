#include "centre/box/Box.h"
#include "centre/box/DataFolderCatalogue.h"
#include "centre/box/Downloads.h"
#include "centre/box/Uploads.h"
#include "centre/content/Version.h"
#include "components/bulkhaul/files/FileFailure.h"
#include "kestaserver.pb.h"
#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "tests/centre/CentreProgram.h"
#include "tests/centre/CentreSupport.h"
#include "tests/support/Certificate.h"

#include <signal.h>

using centre::BoxCatalogue;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

template <class Message>
haulbox::Carried carrying(const std::string& text)
{
    Message message;
    EXPECT_TRUE(google::protobuf::TextFormat::ParseFromString(text, &message));
    haulbox::Carried carried;
    carried.set_type_name(message.GetTypeName());
    carried.set_body(message.SerializeAsString());
    return carried;
}

haulbox::Carried download(const std::string& user)
{
    return carrying<kestaserver::DownloadAuthMsg>("user_name: '" + user + "'");
}

haulbox::Carried upload(const std::string& user, const std::string& folderId = {})
{
    return carrying<kestaserver::UploadAuthMsg>("user_name: '" + user + "'" +
                                                (folderId.empty() ? "" : " folder_id: " + folderId));
}

haulbox::Carried broken()
{
    haulbox::Carried carried = download("demo");
    carried.set_body("\xff");
    return carried;
}

/// Box B1 with disk "disk" of demo's company at /srv/disk (folders 1 disk, 5 disk/a, 6 disk/a/b), disk
/// "theirs" of another company at /srv/disk/theirs, "inner" of demo's in the same way, a version's package.
class BoxCatalogueTest : public CentreTest
{
protected:
    BoxCatalogueTest()
    {
        m_Store.addBox("B1", "127.0.0.1:1");
        m_Store.addBox("B2", "127.0.0.1:2");
        m_Store.addCompany("OTHER");
        reader = m_Store.addUser("reader", "LUMO", false);
        other = m_Store.addUser("other", "OTHER");
        m_Store.addDisk("disk", "/srv/disk", "LUMO", "B1");
        m_Store.addDisk("theirs", "/srv/disk/theirs", "OTHER", "B1");
        m_Store.addDisk("elsewhere", "/srv/elsewhere", "LUMO", "B2");
        m_Store.addDisk("inner", "/srv/disk/inner", "LUMO", "B1");
        m_Store.database().execute(
            "INSERT INTO folder(parent_id, name, disk_id) VALUES (1, 'a', 1), (5, 'b', 1)");
        m_Data.makeFile("package/app/file");
        packages = std::filesystem::canonical(m_Data.below("package")).string();
        addVersion(m_Store, {centre::VersionKind::Program, "P", "1", packages + "/app", "B1", "", "", ""});
    }

    /// The root and what is below it, or the reason of a refusal.
    static std::string admitted(BoxCatalogue& box, const std::string& token, const haulbox::Carried& carried,
                                const std::string& path, BoxCatalogue::Use use)
    {
        std::string reason;
        const auto place = box.admit(token, carried, path, use, reason);
        EXPECT_EQ(place.has_value(), reason.empty()) << path;
        return place ? place->root + "|" + place->below : reason;
    }

    /// Every place of the catalogue, by its disk.
    std::vector<std::string> places()
    {
        std::vector<std::string> found;
        for (const auto& [path, id] : catalogueOf(m_Store))
            found.push_back(path);
        return found;
    }

    std::string reader, other, packages;
    centre::ConnectionPool pool{m_Data.path()};
    centre::DataFolderCatalogue catalogue{pool, "B1"};
};

TEST_F(BoxCatalogueTest, AdmitsWhatTheTokenTheMessageAndThePathAllow)
{
    const auto read = BoxCatalogue::Use::Read;
    const auto write = BoxCatalogue::Use::Write;
    const std::string demo = m_Data.token();
    const struct
    {
        std::string token;
        haulbox::Carried carried;
        BoxCatalogue::Use use;
        std::string path;
        std::string outcome; ///< root and what is below, or a part of the reason
    } cases[] = {
        {demo, download("demo"), read, "/srv/disk", "/srv/disk|"},
        {demo, download("demo"), read, "/srv/disk/a/名 字", "/srv/disk|a/名 字"},
        {demo, download("demo"), read, "/srv/disk/theirs/x", "/srv/disk|theirs/x"},
        {other, download("other"), read, "/srv/disk/theirs/x", "/srv/disk/theirs|x"},
        {reader, download("reader"), read, "/srv/disk/a", "/srv/disk|a"},
        {other, download("other"), read, packages + "/app/file", packages + "|app/file"},
        {demo, upload("demo"), write, "/srv/disk/x/y", "/srv/disk|x/y"},
        {demo, upload("demo", "1"), write, "/srv/disk/x", "/srv/disk|x"},
        {demo, upload("demo", "6"), write, "/srv/disk/a/b/new/x", "/srv/disk|a/b/new/x"},
        {demo, upload("demo", "5"), write, "/srv/disk/a/b/x", "/srv/disk|a/b/x"},
        {demo, upload("demo", "1"), write, "/srv/disk/inner/x", "/srv/disk/inner|x"},
        {demo, upload("demo", "4"), write, "/srv/disk/inner/x", "/srv/disk/inner|x"},

        {demo, upload("demo", "4"), write, "/srv/disk/inner2", "does not hold"},
        {demo, upload("demo", "6"), write, "/srv/disk/a/x", "folder 6 of the catalogue does not hold"},
        {demo, upload("demo", "6"), write, "/srv/disk/a/b", "does not hold"},
        {demo, upload("demo", "1"), write, "/srv/disk", "does not hold"},
        {demo, upload("demo", "2"), write, "/srv/disk/theirs/x", "does not hold"},
        {demo, upload("demo", "4294967295"), write, "/srv/disk/x", "does not hold"},
        {demo, upload("demo"), write, packages + "/app/file", "is in the package of a version"},
        {reader, upload("reader"), write, "/srv/disk/x", "user reader may only read"},
        {"", download("demo"), read, "/srv/disk", "not that of a user"},
        {demo, download("reader"), read, "/srv/disk", "does not belong to user reader"},
        {demo, download("demo"), write, "/srv/disk/x", "DownloadAuthMsg where a kestaserver.UploadAuthMsg"},
        {demo, upload("demo"), read, "/srv/disk/x", "where a kestaserver.DownloadAuthMsg"},
        {demo, haulbox::Carried(), read, "/srv/disk", "no message"},
        {demo, broken(), read, "/srv/disk", "can't be read"},
        {other, download("other"), read, "/srv/disk/a", "not on a disk of box B1 that user other may use"},
    };
    for (const auto& each : cases)
        EXPECT_THAT(admitted(catalogue, each.token, each.carried, each.path, each.use),
                    HasSubstr(each.outcome))
            << each.path;
    for (const std::string& path : {std::string("/srv/disks"), std::string("/srv"), std::string("/"),
                                    std::string("/srv/elsewhere"), packages + "/app2"})
        EXPECT_THAT(admitted(catalogue, demo, download("demo"), path, read), HasSubstr("not on a disk"))
            << path;
    for (const std::string& path : {std::string(""), std::string("srv/disk"), std::string("/srv/disk/../x"),
                                    std::string("/srv/disk/./x"), std::string("/srv//disk"),
                                    std::string("/srv/disk/"), std::string("/srv/disk/x\xff"),
                                    std::string("/srv/disk/x\0y", 13), "/srv/disk/" + std::string(5000, 'x')})
        EXPECT_THAT(admitted(catalogue, demo, download("demo"), path, read), HasSubstr("not a valid path"))
            << path;
}

TEST_F(BoxCatalogueTest, ADiskMayBeTheWholeMachineButTheDataFolderStaysOutOfReach)
{
    ONLY_WITH_A_DATA_FOLDER();
    const std::string all = std::to_string(m_Store.addDisk("all", "/", "LUMO", "B2"));
    const std::string link = m_Data.below("link");
    std::filesystem::create_directory_symlink("data", link);
    centre::ConnectionPool linked(link);
    centre::DataFolderCatalogue box(linked, "B2");
    const std::string folder = std::filesystem::canonical(m_Data.path()).string();
    const std::map<std::string, std::string> outcomes = {
        {"/name", "/|name"},
        {"/name/of", "/|name/of"},
        {folder + "2", "/|" + folder.substr(1) + "2"},
        {folder, "data folder"},
        {folder + "/centre.db", "data folder"},
        {folder.substr(0, folder.rfind('/')), "data folder"},
        {"/", "data folder"},
    };
    for (const auto use : {BoxCatalogue::Use::Read, BoxCatalogue::Use::Write})
        for (const auto& [path, outcome] : outcomes) {
            const auto message = use == BoxCatalogue::Use::Read ? download("demo") : upload("demo", all);
            EXPECT_THAT(admitted(box, m_Data.token(), message, path, use), HasSubstr(outcome)) << path;
        }
    box.record({{"/name", false}, {"/folder", true}, {"/", true}});
    EXPECT_THAT(places(), testing::IsSupersetOf({"all/", "all/folder/", "all/name"}));
}

TEST_F(BoxCatalogueTest, AFullDiskIsAFailureThatSaysSoAndRegistersNothing)
{
    ONLY_WITH_A_DATA_FOLDER();
    std::vector<BoxCatalogue::Entry> entries;
    for (int i = 0; i < 10000; ++i)
        entries.push_back({"/srv/disk/" + std::to_string(i) + std::string(100, 'x'), false});
    const auto limitPages = [this](int pages) {
        centre::ConnectionPool::Lease(pool)->database().value("PRAGMA max_page_count = " +
                                                              std::to_string(pages));
    };
    const auto before = places();
    limitPages(100);
    try {
        catalogue.record(entries);
        ADD_FAILURE() << "recorded on a full disk";
    } catch (const bulkhaul::FileFailure& failure) {
        EXPECT_EQ(failure.status(), haulbox::NO_SPACE);
        EXPECT_THAT(failure.what(), HasSubstr("full"));
    }
    EXPECT_EQ(places(), before);
    limitPages(100000);
    catalogue.record(entries);
    EXPECT_EQ(places().size(), before.size() + entries.size());
}

TEST_F(BoxCatalogueTest, RegistersOnEveryDiskThatShowsThePlaceAllOrNothing)
{
    const auto before = places();
    EXPECT_THROW(catalogue.record({{"/srv/disk/x", false}, {"/srv/elsewhere/x", false}}), std::runtime_error);
    EXPECT_THROW(catalogue.record({{"/srv/disk/../x", false}}), std::runtime_error);
    EXPECT_EQ(places(), before);

    catalogue.record({{"/srv/disk/a/b/deep/er/f", false}, {"/srv/disk/空", true}, {"/srv/disk/a", true}});
    const std::string id = value("SELECT id FROM file WHERE name = 'f'");
    catalogue.record({{"/srv/disk/theirs/both", false}, {"/srv/disk/a/b/deep/er/f", false}});
    EXPECT_THAT(places(), ElementsAre("disk/", "disk/a/", "disk/a/b/", "disk/a/b/deep/", "disk/a/b/deep/er/",
                                      "disk/a/b/deep/er/f", "disk/theirs/", "disk/theirs/both", "disk/空/",
                                      "elsewhere/", "inner/", "theirs/", "theirs/both"));
    EXPECT_EQ(value("SELECT id FROM file WHERE name = 'f'"), id);

    std::vector<BoxCatalogue::Entry> many;
    for (int i = 0; i < 10000; ++i)
        many.push_back({"/srv/disk/many/" + std::to_string(i % 100) + "/" + std::to_string(i), false});
    catalogue.record(many);
    EXPECT_EQ(value("SELECT count(*) FROM file"), "10003");
}

/// Box B1 with a disk of one file.
class ServedBox : public CentreTest
{
protected:
    ServedBox()
    {
        m_Data.makeFile("tree/file", "content");
        m_Store.addBox("B1", "127.0.0.1:1");
        root = std::filesystem::canonical(m_Data.below("tree")).string();
        m_Store.addDisk("disk", root, "LUMO", "B1");
    }

    std::string read(const std::string& address, const std::string& token)
    {
        haulbox::OpenReq request;
        *request.mutable_carried() = download("demo");
        request.set_path(root + "/file");
        return ::ask(*channelTo(address, token), "open", request.ShortDebugString());
    }

    std::string addressByCentre(const centre::Centre& centre)
    {
        return ::ask(*channelTo(centre.address(), m_Data.token()), "getKestaInfo", "code: 'B1'");
    }

    std::vector<std::string> serveBox(const std::vector<std::string>& more)
    {
        std::vector<std::string> arguments = {"serve-box", m_Data.path(), "B1"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return centreCommand(arguments);
    }

    std::string root;
};

TEST_F(ServedBox, IsFoundWhereverItWasServedLast)
{
    centre::ServeOptions options;
    options.boxes = {{"B1", "127.0.0.1:0"}};
    centre::Centre centre(m_Data.path(), options);
    const std::string first = centre.boxes().at(0).address;
    EXPECT_THAT(addressByCentre(centre), HasSubstr("\"" + first + "\""));
    EXPECT_THAT(read(first, m_Data.token()), HasSubstr("data: \"content\""));
    EXPECT_THAT(read(first, "wrong"), HasSubstr("not that of a user"));

    EXPECT_EQ(run(serveBox({})).exitCode, 4);
    centre.stop();
    centre::Centre alone(m_Data.path(), {});
    {
        Process again(serveBox({}));
        EXPECT_EQ(servingAddress(again), first);
    }
    Process moved(serveBox({"--listen", "127.0.0.1:0", "--fault", "open@1=corrupt"}));
    const std::string second = servingAddress(moved);
    EXPECT_THAT(addressByCentre(alone), HasSubstr("\"" + second + "\""));
    EXPECT_THAT(read(second, m_Data.token()), testing::Not(HasSubstr("\"content\"")));
    EXPECT_THAT(read(second, m_Data.token()), HasSubstr("\"content\""));
    moved.signal(SIGTERM);
    EXPECT_EQ(moved.wait(), 0);
    EXPECT_THAT(moved.readLine(), HasSubstr("open@1=corrupt fired 1 time"));
}

TEST_F(ServedBox, AndItsCentreSpeakTlsAlone)
{
    const Certificate certificate;
    ASSERT_TRUE(certificate.made());
    centre::ServeOptions options;
    options.tlsCertificate = certificate.certificate();
    options.tlsKey = certificate.key();
    options.boxes = {{"B1", "127.0.0.1:0"}};
    centre::Centre centre(m_Data.path(), options);
    const std::string address = centre.boxes().at(0).address;
    kestaserver::DownloadAuthMsg message;
    message.set_user_name("demo");
    const auto fetch = [&](const std::string& rootCertificate) {
        return bulkhaul::Download(channelTo(address, m_Data.token(), rootCertificate), root + "/file",
                                  m_Data.below("here"), false, {}, &message, nullptr);
    };
    const auto askUser = [&](const std::string& rootCertificate) {
        return ::ask(*channelTo(centre.address(), m_Data.token(), rootCertificate),
                     "queryUserTableByUserName", "username: 'demo'");
    };
    EXPECT_THAT(askUser(""), HasSubstr("failed: "));
    EXPECT_THAT(askUser(certificate.certificate()), HasSubstr("result: 0"));
    EXPECT_EQ(fetch(""), bulkhaul::kNoConnection);
    EXPECT_EQ(fetch(certificate.certificate()), bulkhaul::kDone);
    EXPECT_EQ(readFile(m_Data.below("here")), "content");
}

TEST_F(ServedBox, EndsTransfersUnderWayWithTheRightToThem)
{
    m_Data.makeFile("tree/large", std::string(std::size_t(3) * 1024 * 1024, 'x'));
    centre::ConnectionPool pool(m_Data.path());
    centre::DataFolderCatalogue catalogue(pool, "B1");
    centre::Admissions admissions(catalogue, centre::Admissions::Pause(0));
    centre::Faults switches;
    centre::BoxFaults faults(switches);
    centre::Downloads downloads(admissions, faults);
    centre::Uploads uploads(admissions, catalogue, faults, centre::OpenUploads::Pause(0));

    haulbox::OpenReq open;
    *open.mutable_carried() = download("demo");
    open.set_path(root + "/large");
    haulbox::OpenRsp opened;
    downloads.open(m_Data.token(), open, opened);
    haulbox::RunReq run;
    run.set_transfer(opened.transfer());
    run.set_version(opened.version());
    run.set_chunks(3);
    wirecall::RpcController call;
    haulbox::Chunk chunk;
    wirecall::OutgoingBuffer data;
    const auto stream = downloads.read(&call, m_Data.token(), run, chunk);
    EXPECT_TRUE(stream->next(data));
    EXPECT_EQ(chunk.status(), haulbox::DONE);
    haulbox::BeginReq begin;
    *begin.mutable_carried() = upload("demo");
    begin.set_path(root + "/new");
    begin.set_size(9);
    haulbox::BeginRsp begun;
    uploads.begin(m_Data.token(), begin, begun);

    m_Store.database().execute("DELETE FROM token");
    awaitChanges();
    stream->next(data);
    EXPECT_EQ(chunk.status(), haulbox::REFUSED);
    EXPECT_EQ(chunk.reason(), centre::kUnknownToken);
    haulbox::FinishReq finish;
    finish.set_upload(begun.upload());
    haulbox::FinishRsp finished;
    try {
        uploads.finish(m_Data.token(), finish, finished);
        ADD_FAILURE() << "finished";
    } catch (const bulkhaul::FileFailure& failure) {
        EXPECT_EQ(failure.status(), haulbox::REFUSED);
    }
}

TEST_F(ServedBox, AnUploadOutlivesAFileSizeLimitAndAKilledBox)
{
    std::string bytes;
    for (unsigned i = 0; bytes.size() < std::size_t(5) * 1024 * 1024; ++i)
        bytes += std::to_string(i * 2654435761u);
    m_Data.makeFile("here", bytes);
    kestaserver::UploadAuthMsg message;
    message.set_user_name("demo");
    const auto send = [&](const std::string& address) {
        return bulkhaul::Upload(channelTo(address, m_Data.token()), root + "/large", m_Data.below("here"),
                                false, {}, &message, nullptr);
    };
    std::vector<std::string> command = serveBox({"--listen", "127.0.0.1:0"});
    command.insert(command.begin(), {"/bin/sh", "-c", "ulimit -f 4096; exec \"$@\"", "sh"}); // 2 MiB
    {
        Process limited(command);
        const std::string address = servingAddress(limited);
        EXPECT_EQ(send(address), bulkhaul::kNoSpace);
        EXPECT_THAT(read(address, m_Data.token()), HasSubstr("\"content\""));
    }
    Process killed(serveBox({"--fault", "write@2=exit"}));
    const std::string address = servingAddress(killed);
    EXPECT_EQ(send(address), bulkhaul::kNoConnection);
    EXPECT_EQ(killed.wait(), 137);
    EXPECT_FALSE(std::filesystem::exists(root + "/large"));

    Process again(serveBox({}));
    EXPECT_EQ(servingAddress(again), address);
    EXPECT_EQ(send(address), bulkhaul::kDone);
    EXPECT_TRUE(readFile(root + "/large") == bytes);
}

} // namespace
