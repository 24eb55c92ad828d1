#include "centre/content/Import.h"
#include "centre/forge/ImageFile.h"
#include "centre/forge/SceneMetadata.h"
#include "centre/forge/ServerCopy.h"
#include "tests/centre/CentreSupport.h"

#include <functional>

#include <fcntl.h>
#include <sys/stat.h>

using testing::AllOf;
using testing::HasSubstr;

namespace {

const std::string kSamples = LUMO_SAMPLES;

/// A disk of company LUMO with the sample scenes and images, one of another company, and a folder that the
/// centre copies from and to.
class Forge : public testing::Test
{
protected:
    Forge()
    {
        const std::string disk = m_Data.below("disk");
        std::filesystem::create_directories(m_Data.below("copies/folder"));
        std::filesystem::create_directories(disk);
        std::filesystem::copy(kSamples + "/scenes", disk + "/scenes",
                              std::filesystem::copy_options::recursive);
        std::filesystem::copy(kSamples + "/imagery", disk + "/imagery");
        m_Data.makeFile("foreign/file");
        std::filesystem::copy(kSamples + "/地形/青藏高原.png", m_Data.below("copies/青藏高原.png"));
        m_Store.addCompany("other");
        import(disk, "disk", "LUMO");
        import(m_Data.below("foreign"), "foreign", "other");
    }

    void import(const std::string& folder, const std::string& disk, const std::string& company)
    {
        centre::ImportOptions options;
        options.folder = folder;
        options.diskName = disk;
        options.companyNo = company;
        centre::importTree(m_Store, options, [](const std::string& problem) { ADD_FAILURE() << problem; });
    }

    void importAgain() { import(m_Data.below("disk"), "disk", "LUMO"); }

    void serve()
    {
        centre::ServeOptions options;
        options.copyRoots = {m_Data.below("copies")};
        m_Centre = std::make_unique<centre::Centre>(m_Data.path(), options);
        m_Channel = channelTo(m_Centre->address(), m_Data.token());
        m_Root = m_Centre->copyRoots().front();
    }

    std::string id(const std::string& place) { return std::to_string(catalogueOf(m_Store).at(place)); }

    /// `m_Told` gets what the centre wrote to standard error.
    std::string ask(const std::string& operation, const std::string& request)
    {
        testing::internal::CaptureStderr();
        const std::string answer = ::ask(*m_Channel, operation, request);
        m_Told = testing::internal::GetCapturedStderr();
        return answer;
    }

    void makeFile(const std::string& name, const std::string& bytes)
    {
        m_Data.makeFile(name);
        std::ofstream(m_Data.below(name), std::ios::binary) << bytes;
    }

    DataFolder m_Data;
    centre::Store m_Store{m_Data.path()};
    std::unique_ptr<centre::Centre> m_Centre;
    boost::shared_ptr<wirecall::RpcChannel> m_Channel;
    std::string m_Root;
    std::string m_Told;
};

TEST_F(Forge, MakesFoldersOnTheDiskAndInTheCatalogueOrNowhere)
{
    const std::string remote = std::to_string(m_Store.addDisk("remote", "/no/such/root", "LUMO"));
    serve();
    const std::string top = id("disk/");
    const std::string parent = "second_id: " + top + " folder_path: ";
    const std::pair<std::string, std::string> made[] = {
        {"first_id: 1 " + parent + "'新/b'", "disk/新/b/"},
        {parent + "'新/b'", "disk/新/b/"},
        {parent + "'新/c'", "disk/新/c/"},
        {"second_id: " + remote + " folder_path: 'a'", "remote/a/"},
    };
    for (const auto& [request, place] : made) {
        const std::string answer = ask("CreateFolder", request);
        EXPECT_EQ(answer, "folder_id: " + id(place));
    }
    EXPECT_TRUE(std::filesystem::is_directory(m_Data.below("disk/新/b")));

    std::filesystem::create_symlink("/tmp", m_Data.below("disk/link"));
    const std::size_t places = catalogueOf(m_Store).size();
    const std::pair<std::string, std::string> refused[] = {
        {parent + "''", "has no name"},
        {parent + "'..'", "not a name of a file or folder: .."},
        {parent + "'a/../b'", "not a name"},
        {parent + "'/a'", "not a name"},
        {parent + "'a/'", "not a name"},
        {parent + "'a\\000'", "not a name"},
        {parent + "'" + std::string(300, 'x') + "'", "not a name"},
        {parent + "'link/a'", "link"},
        {parent + "'imagery/east-asia.jpg/a'", "Not a directory"},
        {"first_id: 2 " + parent + "'a'", "disk 2 is not of the company"},
        {"first_id: 3 " + parent + "'a'", "is on disk 1, not on disk 3"},
        {"second_id: 9999 folder_path: 'a'", "there is no folder 9999"},
        {"second_id: " + id("foreign/") + " folder_path: 'a'", "is not of the company of user demo"},
    };
    for (const auto& [request, reason] : refused) {
        EXPECT_THAT(ask("CreateFolder", request), AllOf(testing::StartsWith("failed: "), HasSubstr(reason)));
        EXPECT_THAT(m_Told, AllOf(HasSubstr("CreateFolder: "), HasSubstr(reason)));
    }
    EXPECT_EQ(catalogueOf(m_Store).size(), places);
    m_Channel = channelTo(m_Centre->address(), m_Store.addUser("reader", "LUMO", false));
    EXPECT_THAT(ask("CreateFolder", parent + "'d'"), HasSubstr("user reader may only read"));
}

TEST_F(Forge, CopiesFilesInAndOut)
{
    serve();
    const std::string source = "src_file: '" + m_Root + "/青藏高原.png'";
    const std::string top = " target_a: 1 target_b: " + id("disk/");
    EXPECT_EQ(ask("FileCopyToDb", source + top + " relative_path: 'x/y'"), "copy_result: true");
    EXPECT_EQ(summaryOf(m_Data.below("disk/x/y/青藏高原.png")), summaryOf(kSamples + "/地形/青藏高原.png"));
    const std::string file = id("disk/x/y/青藏高原.png");
    EXPECT_THAT(ask("FileCopyToDb", source + top + " relative_path: 'x/y'"),
                AllOf(HasSubstr("copy_result: false"), HasSubstr("is there already")));
    makeFile("copies/青藏高原.png", "new");
    EXPECT_EQ(ask("FileCopyToDb", source + top + " relative_path: 'x/y' copy_flag: true"),
              "copy_result: true");
    EXPECT_EQ(readFile(m_Data.below("disk/x/y/青藏高原.png")), "new");
    EXPECT_EQ(id("disk/x/y/青藏高原.png"), file);

    const std::string out = "source_id: " + file + " dist_path: '" + m_Root;
    EXPECT_EQ(ask("FileCopyFromDb", out + "/folder'"), "copy_result: true");
    EXPECT_EQ(readFile(m_Data.below("copies/folder/青藏高原.png")), "new");
    EXPECT_EQ(ask("FileCopyFromDb", out + "/folder/named'"), "copy_result: true");
    EXPECT_EQ(ask("FileCopyFromDb", out + "/folder/named' copy_flag: true"), "copy_result: true");
    EXPECT_EQ(ask("FileCopyFromDb", out + "//folder//' copy_flag: true"), "copy_result: true");

    std::filesystem::create_symlink("/etc/passwd", m_Data.below("copies/link"));
    std::filesystem::create_directory_symlink("/etc", m_Data.below("copies/etc"));
    const auto in = [&top](const std::string& path) { return "src_file: '" + path + "'" + top; };
    const struct
    {
        std::string operation;
        std::string request;
        std::string reason;
    } refused[] = {
        {"FileCopyToDb", in("/etc/passwd"),
         "lies in no folder that the centre copies from and to; those are"},
        {"FileCopyToDb", in(m_Root + "/../disk/imagery/east-asia.jpg"), "is no plain absolute path"},
        {"FileCopyToDb", in(m_Root + "more/a"), "lies in no folder"},
        {"FileCopyToDb", in("青藏高原.png"), "is no plain absolute path"},
        {"FileCopyToDb", in(m_Root), "is no file"},
        {"FileCopyToDb", in(m_Root + "/link"), "link"},
        {"FileCopyToDb", in(m_Root + "/etc/passwd"), "etc"},
        {"FileCopyToDb", in(m_Root + "/folder"), "folder"},
        {"FileCopyToDb", in(m_Root + "/none") + " relative_path: 'left/over'", "No such file"},
        {"FileCopyToDb", source + top + " relative_path: '../x'", "not a name"},
        {"FileCopyToDb", source + " target_a: 2 target_b: 1", "disk 2 is not of the company"},
        {"FileCopyToDb", source, "there is no folder 0"},
        {"FileCopyFromDb", out + "/folder/named'", "named is there already and is not to be overwritten"},
        {"FileCopyFromDb", out + "/none/named'", "No such file"},
        {"FileCopyFromDb", out + "/none/'", "none is no folder"},
        {"FileCopyFromDb", out + "/etc/named'", "etc"},
        {"FileCopyFromDb", "source_id: " + file + " dist_path: '/etc/named'", "lies in no folder"},
        {"FileCopyFromDb", "source_id: 9999 dist_path: '" + m_Root + "/a'", "there is no file 9999"},
        {"FileCopyFromDb", "source_id: " + id("foreign/file") + " dist_path: '" + m_Root + "/a'",
         "is not of the company of user demo"},
    };
    for (const auto& each : refused)
        EXPECT_THAT(ask(each.operation, each.request),
                    AllOf(HasSubstr("copy_result: false error_text: "), HasSubstr(each.reason)))
            << each.request;
    EXPECT_FALSE(std::filesystem::exists(m_Data.below("disk/left")));
    m_Channel = channelTo(m_Centre->address(), m_Store.addUser("reader", "LUMO", false));
    for (const auto& [operation, request] :
         {std::pair<std::string, std::string>("FileCopyToDb", source + top), {"FileCopyFromDb", out + "/a'"}})
        EXPECT_THAT(ask(operation, request), HasSubstr("user reader may only read"));
    centre::ServeOptions options;
    for (const std::string& root : {m_Data.path(), m_Data.below(""), m_Data.below("none")}) {
        options.copyRoots = {root};
        EXPECT_THROW(centre::Centre(m_Data.path(), options), centre::Error) << root;
    }
}

/// Disturbs work that is going on, or cancels it.
centre::IsCanceled disturbing(const std::function<void()>& disturb)
{
    return [disturb] {
        if (disturb)
            disturb();
        return !disturb;
    };
}

std::string reasonOf(const std::function<void()>& work)
{
    try {
        work();
        return "none";
    } catch (const std::exception& exception) {
        return exception.what();
    }
}

TEST_F(Forge, LongWorkThatIsDisturbedLeavesNothing)
{
    centre::ConnectionPool pool(m_Data.path());
    const std::string root = std::filesystem::canonical(m_Data.below("copies")).string();
    centre::ServerCopy copy(pool, {root});
    const centre::User user = centre::ConnectionPool::Lease(pool)->requireUser(m_Data.token());
    for (const std::string content : {"content", ""}) {
        const struct
        {
            std::function<void()> disturb;
            const char* reason;
            std::string left;
        } cases[] = {
            {nullptr, "given up", ""},
            {[this] { makeFile("copies/file", "changed"); }, "changed", ""},
            {[this] { makeFile("disk/to/file", "other"); }, "is there already", "other"},
        };
        for (const auto& each : cases) {
            std::filesystem::remove_all(m_Data.below("disk/to"));
            makeFile("copies/file", content);
            forgeserver::FileCopyToDbReq request;
            request.set_src_file(root + "/file");
            request.set_target_a(1);
            request.set_relative_path("to");
            const auto work = [&] { copy.copyIn(user, request, disturbing(each.disturb)); };
            EXPECT_THAT(reasonOf(work), HasSubstr(each.reason));
            std::string left;
            for (const auto& entry : std::filesystem::directory_iterator(m_Data.below("disk/to")))
                left += readFile(entry.path().string());
            EXPECT_EQ(left, each.left);
            EXPECT_EQ(catalogueOf(m_Store).count("disk/to/file"), 0u);
        }
    }
    for (const char* image : {"/imagery/east-asia.tif", "/imagery/east-asia.jpg", "/地形/青藏高原.png"}) {
        const std::string path = kSamples + image;
        const auto work = [&path] {
            centre::readImage(bulkhaul::FileHandle(::open(path.c_str(), O_RDONLY | O_CLOEXEC)),
                              disturbing(nullptr));
        };
        EXPECT_THAT(reasonOf(work), HasSubstr("given up"));
    }
}

/// A progressive JPEG of one band, its first block coming again in each scan.
std::string jpegOf(const std::string& sides, int scans)
{
    std::string bytes =
        "\xFF\xD8\xFF\xC2" + std::string("\0\x0B\x08", 3) + sides + std::string("\1\1\x11\0", 4);
    bytes += "\xFF\xDB" + std::string("\0\x43\0", 3) + std::string(64, '\1');
    bytes +=
        "\xFF\xC4" + std::string("\0\x14\0\1", 4) + std::string(16, '\0'); // one code, of no bits to follow
    for (int i = 0; i < scans; ++i)
        bytes += "\xFF\xDA" + std::string("\0\x08\1\1\0\0\0\0\x7F", 9);
    return bytes + "\xFF\xD9";
}

/// A TIFF with these fields, tag and number.
std::string tiffOf(const std::vector<std::pair<std::uint16_t, std::uint32_t>>& fields)
{
    std::string bytes = "II*" + std::string("\0\x08\0\0\0", 5);
    const auto put = [&bytes](std::uint32_t value, int size) {
        for (int i = 0; i < size; ++i)
            bytes += static_cast<char>(value >> 8 * i);
    };
    put(static_cast<std::uint32_t>(fields.size()), 2);
    for (const auto& [tag, value] : fields) {
        put(tag, 2);
        put(4, 2); // a number of 32 bits
        put(1, 4);
        put(value, 4);
    }
    put(0, 4);
    return bytes;
}

TEST_F(Forge, AnalysesImages)
{
    const std::string tif = readFile(kSamples + "/imagery/east-asia.tif");
    const std::string jpg = readFile(kSamples + "/imagery/east-asia.jpg");
    const std::string png = readFile(kSamples + "/地形/青藏高原.png");
    const std::string start = "II*" + std::string("\0\x08\0\0\0", 5);
    std::vector<std::pair<std::string, std::string>> damaged = {
        {"empty", ""},
        {"text", "no image at all"},
        {"cut.tif", tif.substr(0, tif.size() / 2)},
        {"head.tif", tif.substr(0, 4)},
        {"loop.tif", start + std::string("\xff\xff", 2) + std::string(4000, '\x08')},
        {"manyPieces.tif",
         tiffOf({{256, 1}, {257, 0xFFFFFFFF}, {258, 8}, {262, 1}, {273, 8}, {278, 1}, {279, 1}})},
        {"noPixels.tif", tiffOf({{256, 0}, {257, 0}, {258, 8}, {262, 1}, {273, 8}, {279, 1}})},
        {"noData.tif", tiffOf({{256, 1}, {257, 1}, {258, 8}, {262, 1}, {273, 0}, {278, 1}, {279, 0}})},
        {"farAway.tif", tiffOf({{256, 9}, {257, 9}, {258, 8}, {262, 1}, {273, 4000000000}, {279, 81}})},
        {"scans.jpg", jpegOf(std::string("\0\x08\0\x08", 4), 101)},
        {"cut.jpg", jpg.substr(0, jpg.size() / 2)},
        {"head.jpg", jpg.substr(0, 8)},
        {"cut.png", png.substr(0, png.size() / 2)},
        {"wrong.png", png.substr(0, 60) + "xxxx" + png.substr(64)},
    };
    for (const std::size_t lost : {1, 2, 31, 32, 33, 90}) // values of fields behind the data
        damaged.emplace_back("cut" + std::to_string(lost) + ".tif", tif.substr(0, tif.size() - lost));
    makeFile("disk/scans.jpg", jpegOf(std::string("\0\x08\0\x08", 4), 100));
    makeFile("disk/large.jpg", jpegOf("\x40\x01\x3F\x01", 1)); // its coefficients have 512 MiB
    for (const auto& [name, bytes] : damaged)
        makeFile("disk/damaged/" + name, bytes);
    m_Data.makeFile("disk/gone");
    ASSERT_EQ(::mkfifo(m_Data.below("disk/pipe").c_str(), 0600), 0);
    std::filesystem::copy(kSamples + "/地形/青藏高原.png", m_Data.below("disk/gray.png"));
    importAgain();
    std::filesystem::remove(m_Data.below("disk/gone"));
    std::filesystem::create_symlink("/etc/passwd", m_Data.below("disk/gone"));
    m_Store.database().exec("INSERT INTO file(parent_id, name) VALUES (1, 'pipe')");
    serve();
    const auto main = [this](const std::string& place, const std::string& rest = "") {
        return "img_name: 'N' main_file { ref_id: " + id(place) + " text: '" +
               place.substr(place.rfind('/') + 1) + "' } " + rest;
    };
    const struct
    {
        const char* place;
        const char* texts;
    } images[] = {
        {"disk/imagery/east-asia.tif",
         "short_text: \"GTiff 320x180x3\" long_text: \"EPSG:4326 west 70 south 10 east 150 north 55\""},
        {"disk/imagery/east-asia.jpg", "short_text: \"JPEG 640x360x3\""},
        {"disk/scans.jpg", "short_text: \"JPEG 8x8x1\""},
        {"disk/large.jpg", "short_text: \"JPEG 16129x16385x1\""},
        {"disk/gray.png", "short_text: \"PNG 256x128x1\""},
    };
    for (const auto& image : images) {
        const std::string query = "file_id: " + id(image.place);
        EXPECT_EQ(ask("AnalyzeImage", main(image.place)), "analyze_result: true");
        EXPECT_THAT(ask("queryFileTableByFileId", query), testing::Not(HasSubstr("short_text")));
        EXPECT_EQ(ask("AnalyzeImage", main(image.place, "analyze_flag: true")), "analyze_result: true");
        EXPECT_THAT(ask("queryFileTableByFileId", query), HasSubstr(std::string(image.texts) + " }"));
    }
    for (const auto& [name, bytes] : damaged)
        EXPECT_THAT(
            ask("AnalyzeImage", main("disk/damaged/" + name)),
            AllOf(HasSubstr("analyze_result: false"), HasSubstr("image N: main file "), HasSubstr(name)))
            << name;
    const std::string jpeg = "disk/imagery/east-asia.jpg";
    const std::string other = "{ ref_id: " + id("disk/scenes/alos/summary.txt") + " }";
    EXPECT_EQ(ask("AnalyzeImage", main(jpeg, "meta_file " + other + " attach_file " + other)),
              "analyze_result: true");
    const std::pair<std::string, std::string> refused[] = {
        {"img_name: 'N'", "image N: it has no main file"},
        {main("disk/gone"), "gone: Too many levels of symbolic links"},
        {main("disk/pipe"), "pipe is no regular file"},
        {main("foreign/file"), "is not of the company of user demo"},
        {"main_file { ref_id: 9999 }", "there is no file 9999"},
        {"main_file { ref_id: " + id(jpeg) + " text: 'b.jpg' }", "in the catalogue it is east-asia.jpg"},
        {main(jpeg, "meta_file { ref_id: 9999 }"), "metadata file 9999"},
        {main(jpeg, "attach_file { ref_id: " + id("disk/gone") + " }"), "attached file "},
    };
    for (const auto& [request, reason] : refused)
        EXPECT_THAT(ask("AnalyzeImage", request),
                    AllOf(HasSubstr("analyze_result: false error_text: "), HasSubstr(reason)));
    EXPECT_EQ(ask("AnalyzeImages", ""), "");
    EXPECT_THAT(ask("AnalyzeImages", "analyze_req { " + main(jpeg) + " } analyze_req { } analyze_req { " +
                                         main("disk/gray.png") + " }"),
                AllOf(testing::StartsWith("analyze_rsp { analyze_result: true } "
                                          "analyze_rsp { analyze_result: false error_text: "),
                      testing::EndsWith(" analyze_rsp { analyze_result: true }")));
    m_Channel = channelTo(m_Centre->address(), m_Store.addUser("reader", "LUMO", false));
    EXPECT_EQ(ask("AnalyzeImage", main(jpeg)), "analyze_result: true");
    EXPECT_THAT(ask("AnalyzeImage", main(jpeg, "analyze_flag: true")),
                HasSubstr("user reader may only read"));
}

TEST_F(Forge, ReadsMetadataOfScenes)
{
    const std::string spot6 = "SPOT6_MS_201305180300123_ORT_1";
    const std::string dim = readFile(kSamples + "/scenes/spot5/metadata.dim");
    const std::string entity = "<!DOCTYPE a [<!ENTITY x SYSTEM \"file:///etc/passwd\">]>";
    const struct
    {
        const char* operation;
        const char* name;
        std::string bytes;
        const char* reason;
    } damaged[] = {
        {"Spot5FromDim", "cut.dim", dim.substr(0, dim.size() / 2), "damaged XML at byte "},
        {"Spot5FromDim", "entity.dim", entity + dim.substr(dim.find("<Dimap")), "declares entities"},
        {"Spot5FromDim", "nul.dim", "<Dimap_Document>a&#x00;b</Dimap_Document>", "the character 0"},
        {"Spot5FromDim", "other.dim", "<other/>", "no DIMAP document"},
        {"Spot5FromDim", "nameless.dim", "<Dimap_Document/>", "has no Dataset_Id/DATASET_NAME"},
        {"Spot6FromDim", "five.XML", dim, "has no Dataset_Identification/DATASET_NAME"},
        {"Spot6FromDim", "empty.XML", "", "damaged XML"},
        {"AlosFromSummary", "summary1.txt", "Scs_SceneID=ALPS", "key=\"value\", not Scs_SceneID=ALPS"},
        {"AlosFromSummary", "summary2.txt", "a=\"b\"\n", "no Scs_SceneID"},
        {"AlosFromSummary", "summary3.txt", "a=\"\xff\"", "no text in UTF-8"},
        {"AdsFromSup", "a.sup", "SENSOR_TYPE ADS80", "no IMAGE_ID"},
        {"AdsFromSup", "b.sup", std::string("IMAGE_ID a\0b", 12), "no text in UTF-8"},
    };
    for (const auto& each : damaged)
        makeFile(std::string("disk/damaged/") + each.name, each.bytes);
    m_Data.makeFile("disk/damaged/large.dim");
    std::filesystem::resize_file(m_Data.below("disk/damaged/large.dim"), std::uintmax_t(1) << 34);
    makeFile("disk/damaged/a.sup.txt", "image_id:\tA\r\n\r\nDate_Time = 2026-01-31\r\nLINES\r\n");
    importAgain();
    serve();
    const auto read = [this](const std::string& operation, const std::string& place) {
        return ask(operation, "image_id: " + id(place));
    };
    EXPECT_EQ(read("Spot5FromDim", "disk/scenes/spot5/metadata.dim"),
              "sat_name: \"SCENE 5 271-266 26/01/31 03:10:35 2 J\" main_file: \"imagery.tif\""
              " meta_file: \"metadata.dim\" sat_result: true");
    EXPECT_EQ(read("Spot6FromDim", "disk/scenes/spot6/DIM_" + spot6 + ".XML"),
              "sat_name: \"DS_SPOT6_201305180300123_FR1_FR1_E100N34_01234\" main_file: \"IMG_" + spot6 +
                  ".TIF\" meta_file: \"DIM_" + spot6 + ".XML\" meta_file: \"RPC_" + spot6 +
                  ".XML\" sat_result: true");
    EXPECT_EQ(read("AlosFromSummary", "disk/scenes/alos/summary.txt"),
              "sat_name: \"ALPSMW162762790\" main_file: \"IMG-ALPSMW162762790-O1B2R_UW\""
              " meta_file: \"summary.txt\" meta_file: \"VOL-ALPSMW162762790-O1B2R_UW\""
              " meta_file: \"LED-ALPSMW162762790-O1B2R_UW\" sat_result: true");
    EXPECT_EQ(read("AdsFromSup", "disk/scenes/ads/L0_201605120932_PANF28A.sup"),
              "ads_text1: \"L0_201605120932_PANF28A\" ads_text2: \"ADS80\""
              " ads_text3: \"L0_201605120932_PANF28A.tif\" ads_text4: \"201605120932.odf\""
              " ads_text5: \"PANF28A.cam\" ads_text6: \"2016-05-12 09:32:10\" ads_result: true");
    EXPECT_EQ(read("AdsFromSup", "disk/damaged/a.sup.txt"),
              "ads_text1: \"A\" ads_text2: \"\" ads_text3: \"\" ads_text4: \"\" ads_text5: \"\""
              " ads_text6: \"2026-01-31\" ads_result: true");
    for (const auto& each : damaged) {
        EXPECT_THAT(read(each.operation, std::string("disk/damaged/") + each.name),
                    testing::AnyOf("sat_result: false", "ads_result: false"))
            << each.name;
        EXPECT_THAT(m_Told, AllOf(HasSubstr(each.operation), HasSubstr(each.reason)));
    }
    EXPECT_EQ(read("Spot5FromDim", "disk/damaged/large.dim"), "sat_result: false");
    EXPECT_THAT(m_Told, HasSubstr("17179869184 bytes; 16777216 are read at most"));
    EXPECT_EQ(read("Spot5FromDim", "foreign/file"), "sat_result: false");
    EXPECT_THAT(m_Told, HasSubstr("is not of the company of user demo"));
    EXPECT_EQ(ask("AlosFromSummary", "image_id: 9999"), "sat_result: false");
}

TEST(SceneMetadata, OfAnyDepthIsRead)
{
    std::string deep = "<Dimap_Document>";
    for (int i = 0; i < 1000000; ++i)
        deep += "<a>";
    EXPECT_THROW(centre::readSpot5Dim(deep), centre::Error);
    for (int i = 0; i < 1000000; ++i)
        deep += "</a>";
    deep += "<Dataset_Id><DATASET_NAME>n</DATASET_NAME></Dataset_Id></Dimap_Document>";
    EXPECT_EQ(centre::readSpot5Dim(deep).name, "n");
}

TEST_F(Forge, IsFaulted)
{
    centre::ServeOptions options;
    options.faults = {"AnalyzeImage@1=refuse", "CreateFolder=refuse", "addDataFile=result:-7"};
    m_Centre = std::make_unique<centre::Centre>(m_Data.path(), options);
    m_Channel = channelTo(m_Centre->address(), m_Data.token());
    EXPECT_EQ(ask("AnalyzeImage", ""), "failed: refused by a fault switch");
    EXPECT_THAT(ask("AnalyzeImage", ""), HasSubstr("analyze_result: false"));
    EXPECT_EQ(ask("CreateFolder", ""), "failed: refused by a fault switch");
    EXPECT_EQ(ask("addDataFile", ""), "result: -7");
    m_Centre->stop();
    options.faults = {"AnalyzeImage=result:-1"};
    expectError(centre::ExitCode::WrongUse, "AnalyzeImage has no result to fault",
                [&] { centre::Centre(m_Data.path(), options); });
}

} // namespace
