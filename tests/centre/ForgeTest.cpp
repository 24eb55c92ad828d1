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
