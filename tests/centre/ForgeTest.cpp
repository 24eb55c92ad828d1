#include "centre/forge/ServerCopy.h"
#include "centre/image/ImageReader.h"
#include "centre/image/process/SceneMetadata.h"
#include "tests/centre/CentreSupport.h"

#include <QTemporaryDir>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <functional>
#include <thread>

#include <sys/stat.h>

using testing::AllOf;
using testing::HasSubstr;

namespace {

const std::string kSamples = LUMO_SAMPLES;

class Forge : public CentreTest
{
protected:
    std::string id(const std::string& place) { return std::to_string(catalogueOf(m_Store).at(place)); }
};

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
    m_Data.makeFile("copies/file");
    m_Data.makeFile("disk/file");
    import("disk", "disk");
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
            {[this] { m_Data.makeFile("copies/file", "changed"); }, "changed", ""},
            {[this] { m_Data.makeFile("disk/to/file", "other"); }, "exists already", "other"},
        };
        for (const auto& each : cases) {
            std::filesystem::remove_all(m_Data.below("disk/to"));
            m_Data.makeFile("copies/file", content);
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
    centre::ImageReader images;
    const auto work = [&images] {
        images.check(bulkhaul::Folder::open(kSamples + "/imagery"), "east-asia.tif", disturbing(nullptr));
    };
    EXPECT_THAT(reasonOf(work), HasSubstr("given up"));
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

TEST_F(Forge, RefusesDamagedImagesAndReadsLargeOnes)
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
        {"end.png", png.substr(0, png.size() - 1)},
    };
    for (const std::size_t lost : {1, 2, 31, 32, 33, 90}) // values of fields behind the data
        damaged.emplace_back("cut" + std::to_string(lost) + ".tif", tif.substr(0, tif.size() - lost));
    m_Data.makeFile("disk/scans.jpg", jpegOf(std::string("\0\x08\0\x08", 4), 100));
    m_Data.makeFile("disk/large.jpg", jpegOf("\x40\x01\x3F\x01", 1)); // its coefficients have 512 MiB
    for (const auto& [name, bytes] : damaged)
        m_Data.makeFile("disk/damaged/" + name, bytes);
    ASSERT_EQ(::mkfifo(m_Data.below("disk/pipe").c_str(), 0600), 0);
    import("disk", "disk");
    m_Store.database().execute("INSERT INTO file(parent_id, name) VALUES (1, 'pipe')");
    serve();
    const auto analyze = [this](const std::string& place) {
        return ask("AnalyzeImage", "img_name: 'N' analyze_flag: true main_file { ref_id: " + id(place) +
                                       " text: '" + place.substr(place.rfind('/') + 1) + "' }");
    };
    for (const auto& [place, text] :
         {std::pair("disk/scans.jpg", "\"JPEG 8x8x1\""), {"disk/large.jpg", "\"JPEG 16129x16385x1\""}}) {
        EXPECT_EQ(analyze(place), "analyze_result: true");
        EXPECT_THAT(ask("queryFileTableByFileId", "file_id: " + id(place)), HasSubstr(text));
    }
    for (const auto& [name, bytes] : damaged)
        EXPECT_THAT(analyze("disk/damaged/" + name), AllOf(HasSubstr("analyze_result: false"),
                                                           HasSubstr("image N: main file "), HasSubstr(name)))
            << name;
    EXPECT_THAT(analyze("disk/pipe"), HasSubstr("pipe is not a regular file"));
}

/// A VRT, GDAL's image as text, of 20 by 10 pixels.
std::string vrtOf(const std::string& system, const std::string& transform, const std::string& source = {})
{
    return "<VRTDataset rasterXSize='20' rasterYSize='10'><SRS>" + system + "</SRS><GeoTransform>" +
           transform + "</GeoTransform><VRTRasterBand dataType='Byte' band='1'>" + source +
           "</VRTRasterBand></VRTDataset>";
}

std::string sourceOf(const std::string& path, bool relative)
{
    return "<SimpleSource><SourceFilename relativeToVRT='" + std::to_string(int(relative)) + "'>" + path +
           "</SourceFilename><SourceBand>1</SourceBand></SimpleSource>";
}

class Images : public testing::Test
{
protected:
    std::string reasonOfCheck(const std::string& file)
    {
        return reasonOf([&] { m_Reader.check(folder(), file); });
    }
    bulkhaul::Folder folder() const { return bulkhaul::Folder::open(m_Place.path().toStdString()); }
    std::string below(const std::string& name) const { return m_Place.path().toStdString() + "/" + name; }
    void copySample(const std::string& name) const
    {
        std::filesystem::copy_file(kSamples + "/" + name, below(name.substr(name.rfind('/') + 1)));
    }

    QTemporaryDir m_Place;
    centre::ImageReader m_Reader{{"", 1, {}}};
};

TEST_F(Images, HaveBoundsInDegreesOfAnySystem)
{
    const struct
    {
        const char* system;
        const char* transform;
        double west, south, east, north;
        int points;
    } cases[] = {
        {"EPSG:4326", "70, 0.5, 0, 55, 0, -0.5", 70, 50, 80, 55, 5},
        {"EPSG:4326", "350, 1, 0, 5, 0, -1", -10, -5, 10, 5, 5},
        {"EPSG:4326", "175, 0.5, 0, 5, 0, -0.5", 175, 0, -175, 5, 5},
        {"EPSG:4326", "-180, 18, 0, 90, 0, -18", -180, -90, 180, 90, 5},
        {"EPSG:32601", "100000, 10000, 0, 100000, 0, -10000", 179.4, 0, -178.8, 0.91, 20}, // UTM, zone 1
        {"EPSG:3995", "-1000000, 100000, 0, 500000, 0, -100000", -180, 79.7, 180, 90, 0},  // around the pole
    };
    for (const auto& each : cases) {
        writeFile(below("a.vrt"), vrtOf(each.system, each.transform));
        const centre::image::Image image = m_Reader.describe(folder(), "a.vrt");
        EXPECT_EQ(image.reference_system(), each.system);
        EXPECT_NEAR(image.geographic_bounds().west(), each.west, 0.1) << each.transform;
        EXPECT_NEAR(image.geographic_bounds().south(), each.south, 0.1) << each.transform;
        EXPECT_NEAR(image.geographic_bounds().east(), each.east, 0.1) << each.transform;
        EXPECT_NEAR(image.geographic_bounds().north(), each.north, 0.1) << each.transform;
        EXPECT_EQ(image.footprint_size(), 2 * each.points) << each.transform;
    }
}

TEST_F(Images, ReachNothingButTheirFolder)
{
    copySample("scenes/spot5/imagery.tif");
    EXPECT_EQ(m_Reader.check(folder(), "imagery.tif").sensor(), "");
    const std::string metadata = kSamples + "/scenes/spot5/metadata.dim";
    std::filesystem::create_symlink(metadata, below("metadata.dim"));
    EXPECT_EQ(m_Reader.check(folder(), "imagery.tif").sensor(), "");
    std::filesystem::remove(below("metadata.dim"));
    copySample("scenes/spot5/metadata.dim");
    const centre::image::Image image = m_Reader.check(folder(), "imagery.tif");
    EXPECT_EQ(image.sensor() + " " + image.date(), "SPOT 5 2026-01-31");

    std::filesystem::create_symlink(below("imagery.tif"), below("link.tif"));
    std::filesystem::create_directory(below("inner"));
    const auto vrt = [](const std::string& source) {
        return vrtOf("EPSG:4326", "0, 1, 0, 0, 0, -1", source);
    };
    writeFile(below("beside.vrt"), vrt(sourceOf("imagery.tif", true)));
    EXPECT_EQ(reasonOfCheck("beside.vrt"), "none");
    for (const auto& [path, relative] : {std::pair(below("imagery.tif"), false),
                                         {"link.tif", true},
                                         {"/vsicurl/http://127.0.0.1:1/a.tif", false}}) {
        writeFile(below("beyond.vrt"), vrt(sourceOf(path, relative)));
        EXPECT_THAT(reasonOfCheck("beyond.vrt"), HasSubstr("damaged VRT")) << path;
    }
    writeFile(below("inner/beyond.vrt"), vrt(sourceOf("../imagery.tif", true)));
    EXPECT_THAT(reasonOf([&] { m_Reader.check(folder().below("inner"), "beyond.vrt"); }),
                HasSubstr("damaged VRT"));
    const std::string status = readFile("/proc/" + std::to_string(m_Reader.idle().at(0)) + "/status");
    EXPECT_THAT(status,
                AllOf(HasSubstr("NoNewPrivs:\t1"), HasSubstr("Seccomp:\t2"), HasSubstr("Threads:\t1")));
}

TEST_F(Images, HaveQuickLooks)
{
    copySample("imagery/east-asia.tif");
    copySample("地形/青藏高原.png");
    const centre::image::Picture color = m_Reader.quickLook(folder(), "east-asia.tif", 100);
    EXPECT_EQ(color.media_type(), "image/jpeg");
    writeFile(below("color.jpg"), color.data());
    const centre::image::Picture gray = m_Reader.quickLook(folder(), "青藏高原.png", 64);
    EXPECT_EQ(gray.media_type(), "image/png");
    writeFile(below("gray.png"), gray.data());
    const centre::image::Image read = m_Reader.check(folder(), "color.jpg");
    EXPECT_EQ(std::pair(read.width(), read.height()), std::pair(100u, 56u));
    EXPECT_EQ(m_Reader.check(folder(), "gray.png").width(), 64u);
}

TEST_F(Images, ThatEndTheirProcessAreRefusedAndTheNextIsRead)
{
    copySample("imagery/east-asia.tif");
    centre::ImageReader reader({"", 1, {std::chrono::milliseconds(1000), 300 << 20}});
    const auto check = [&](const std::string& file,
                           const centre::IsCanceled& during = centre::neverCanceled) {
        return reasonOf([&] { reader.check(folder(), file, during); });
    };
    EXPECT_EQ(check("east-asia.tif"), "none");
    const pid_t first = reader.idle().at(0);
    ::kill(first, SIGSTOP);
    EXPECT_EQ(check("east-asia.tif"), "the process that read it took too long");
    EXPECT_EQ(check("east-asia.tif"), "none");
    const pid_t second = reader.idle().at(0);
    EXPECT_NE(second, first);
    ::kill(second, SIGSTOP);
    const auto kill = [second] { ::kill(second, SIGKILL); };
    EXPECT_EQ(
        check("east-asia.tif", [&, calls = 0]() mutable { return ++calls == 2 ? kill(), false : false; }),
        "the process that read it died of signal 9");
    EXPECT_EQ(check("east-asia.tif"), "none");

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // these take terabytes of address space
    // One tile of 256 MiB, by PackBits in 4.
    std::string zeros;
    for (int i = 0; i < (256 << 20) / 128; ++i)
        zeros += std::string("\x81\0", 2);
    std::string tiff = tiffOf({{256, 1 << 14},
                               {257, 1 << 14},
                               {258, 8},
                               {259, 32773},
                               {262, 1},
                               {322, 1 << 14},
                               {323, 1 << 14},
                               {324, 134},
                               {325, static_cast<std::uint32_t>(zeros.size())}});
    tiff.resize(134);
    writeFile(below("large.tif"), tiff + zeros);
    EXPECT_EQ(reasonOfCheck("large.tif"), "none");
    EXPECT_NE(check("large.tif"), "none");
    EXPECT_EQ(check("east-asia.tif"), "none");
#endif
    EXPECT_THAT(reasonOf([&] {
                    centre::ImageReader({"/no/program", 1, {}}).check(folder(), "east-asia.tif");
                }),
                HasSubstr("/no/program can't be started: No such file"));
    EXPECT_THAT(reasonOf([&] {
                    centre::ImageReader({"/bin/true", 1, {}}).check(folder(), "east-asia.tif");
                }),
                HasSubstr("ended with code 0"));
}

TEST_F(Images, AreReadSeveralAtOnce)
{
    copySample("imagery/east-asia.tif");
    centre::ImageReader reader({"", 2, {}});
    std::vector<std::thread> threads;
    std::atomic<int> read{0};
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] {
            for (int j = 0; j < 5; ++j)
                read += reader.check(folder(), "east-asia.tif").width() == 320 ? 1 : 0;
        });
    for (std::thread& each : threads)
        each.join();
    EXPECT_EQ(read, 40);
    EXPECT_LE(reader.idle().size(), 2u);
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

} // namespace
