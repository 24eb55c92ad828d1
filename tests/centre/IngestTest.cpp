#include "centre/content/Ingest.h"
#include "tests/centre/CentreSupport.h"

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using testing::UnorderedElementsAre;

namespace {

using FileOutcome = centre::IngestedFile::Outcome;

class Ingest : public CentreTest
{
protected:
    void copySample(const std::string& sample, const std::string& name) const
    {
        m_Data.makeFile(name, readFile(LUMO_SAMPLES "/" + sample));
    }

    /// Returns how many files there were of each outcome.
    std::map<FileOutcome, std::uint64_t> ingest(const std::string& folder, const std::string& kind = {},
                                                const std::string& project = "P")
    {
        m_Files.clear();
        centre::IngestOptions options;
        options.folder = m_Data.below(folder);
        options.projectName = project;
        options.companyNo = "LUMO";
        options.kind = kind;
        options.report = [this](const centre::IngestedFile& file) {
            m_Files[fs::path(file.path).filename().string()] =
                file.kind.empty() ? file.reason : file.kind + " " + std::to_string(file.recordId);
        };
        m_Report = centre::ingest(m_Store, options);
        return m_Report.counts;
    }

    std::map<std::string, std::string> m_Files; ///< what the report had of each by its name
    centre::IngestReport m_Report;
};

TEST_F(Ingest, RegistersImagesOfAFolderWithWhatTheySayOfThemselves)
{
    for (const char* sample :
         {"imagery/east-asia.tif", "imagery/east-asia.jpg", "scenes/spot5/imagery.tif",
          "scenes/spot5/metadata.dim", "scenes/spot6/DIM_SPOT6_MS_201305180300123_ORT_1.XML",
          "scenes/spot6/IMG_SPOT6_MS_201305180300123_ORT_1.TIF",
          "scenes/spot6/RPC_SPOT6_MS_201305180300123_ORT_1.XML", "ORIGIN.md"})
        copySample(sample, "disk/" + std::string(sample));
    m_Data.makeFile("disk/heights.asc",
                    "ncols 2\nnrows 2\nxllcorner 10\nyllcorner 20\ncellsize 1\n1 2\n3 4\n");
    const std::string image = readFile(LUMO_SAMPLES "/imagery/east-asia.tif");
    m_Data.makeFile("disk/imagery/damaged.tif", image.substr(0, image.size() / 2));
    EXPECT_THAT(ingest("disk"), ElementsAre(Pair(FileOutcome::Taken, 5), Pair(FileOutcome::Part, 2),
                                            Pair(FileOutcome::NoImage, 2), Pair(FileOutcome::Refused, 1)));
    EXPECT_EQ(m_Files["east-asia.tif"], "dom 1");
    EXPECT_EQ(m_Files["east-asia.jpg"], "photo 1");
    EXPECT_EQ(m_Files["heights.asc"], "dem 1");
    EXPECT_EQ(m_Files["imagery.tif"], "sat 1");
    EXPECT_EQ(m_Files["IMG_SPOT6_MS_201305180300123_ORT_1.TIF"], "sat 2");
    EXPECT_THAT(m_Files["damaged.tif"], HasSubstr("Can not read TIFF directory"));
    EXPECT_TRUE(m_Report.import.diskIsNew && m_Report.projectIsNew);
    EXPECT_EQ(value("SELECT image_name || sensor || date || CAST(west + north AS INTEGER) FROM sat WHERE "
                    "image_id = 1"),
              "imagerySPOT 52026-01-31154");
    EXPECT_EQ(value("SELECT short_text || long_text FROM file WHERE name = 'east-asia.tif'"),
              "GTiff 320x180x3EPSG:4326 west 70 south 10 east 150 north 55");
    EXPECT_THAT(value("SELECT description FROM image_description JOIN dom ON file_id = main_file_id"),
                HasSubstr("\"footprint\":[70,55,70,10,150,10,150,55,70,55]"));

    EXPECT_THAT(ingest("disk"), ElementsAre(Pair(FileOutcome::Known, 5), Pair(FileOutcome::Part, 2),
                                            Pair(FileOutcome::NoImage, 2), Pair(FileOutcome::Refused, 1)));
    EXPECT_EQ(value("SELECT count(*) FROM type"), "4");
}

TEST_F(Ingest, TakesAFolderOfADiskIntoWhatExists)
{
    copySample("imagery/east-asia.tif", "disk/a/one.tif");
    copySample("imagery/east-asia.tif", "disk/b/c/two.tif");
    import("disk", "named");
    copySample("imagery/east-asia.tif", "disk/b/c/three.tif");
    load(R"({"kind":"project","projectID":7,"projectName":"P"}
{"kind":"type","typeID":8,"projectID":7,"dataType":"dsm"})");
    EXPECT_THAT(ingest("disk/b", "dsm"), ElementsAre(Pair(FileOutcome::Taken, 2)));
    EXPECT_THAT(m_Files, UnorderedElementsAre(Pair("three.tif", "dsm 1"), Pair("two.tif", "dsm 2")));
    EXPECT_FALSE(m_Report.import.diskIsNew || m_Report.projectIsNew);
    EXPECT_EQ(value("SELECT min(type_id) + max(type_id) FROM dsm"), "16");
    EXPECT_EQ(catalogueOf(m_Store).count("named/b/c/three.tif"), 1u);
    EXPECT_THAT(ingest("disk"), ElementsAre(Pair(FileOutcome::Taken, 1), Pair(FileOutcome::Known, 2)));
    EXPECT_THAT(ingest("disk/a", "", "another"), ElementsAre(Pair(FileOutcome::Taken, 1)));
    EXPECT_THAT(value("SELECT count(*) FROM disk"), "1");
}

TEST_F(Ingest, RefusesWhatItCannotDo)
{
    m_Data.makeFile("disk/file");
    using centre::ExitCode;
    expectError(ExitCode::WrongUse, "images can't be of kind point", [this] { ingest("disk", "point"); });
    expectError(ExitCode::WrongUse, "the project's name must not be empty",
                [this] { ingest("disk", "", ""); });
    expectError(ExitCode::Failed, "No such file", [this] { ingest("missing"); });
    EXPECT_THAT(ingest("disk"), ElementsAre(Pair(FileOutcome::Refused, 1)));
    EXPECT_EQ(value("SELECT count(*) FROM project"), "0");
}

} // namespace
