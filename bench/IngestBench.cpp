// Ingestion of many small GeoTIFFs, beside GDAL alone, which opens each, asks for its place and reads its
// first block, in one process without limits.

#include "bench/Rows.h"
#include "bench/Turns.h"
#include "centre/content/Ingest.h"
#include "centre/store/Store.h"

#include <benchmark/benchmark.h>
#include <gdal_priv.h>
#include <ogr_spatialref.h>

#include <QTemporaryDir>

#include <array>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr int kImages = 10000;
constexpr int kSide = 64;
constexpr std::size_t kPixels = 4096;

struct Close
{
    void operator()(GDALDataset* dataset) const { GDALClose(dataset); }
};
using Dataset = std::unique_ptr<GDALDataset, Close>;

/// Images in UTM of three bands, and of one with heights; a hundred in each folder.
void makeImage(GDALDriver& driver, const std::string& system, const std::string& path, int number)
{
    const bool isHeights = number % 4 == 0;
    const Dataset image(driver.Create(path.c_str(), kSide, kSide, isHeights ? 1 : 3,
                                      isHeights ? GDT_Int16 : GDT_Byte, nullptr));
    const int row = number / 100;
    std::array<double, 6> transform = {300000.0 + number % 100 * kSide, 1, 0, 4000000.0 - row * kSide, 0, -1};
    image->SetGeoTransform(transform.data());
    image->SetProjection(system.c_str());
    std::vector<GInt16> pixels(kPixels, static_cast<GInt16>(number % 250));
    for (GDALRasterBand* band : image->GetBands())
        if (band->RasterIO(GF_Write, 0, 0, kSide, kSide, pixels.data(), kSide, kSide, GDT_Int16, 0, 0,
                           nullptr) != CE_None)
            throw std::runtime_error("an image can't be written");
}

std::vector<std::string> makeImages(const std::string& folder)
{
    OGRSpatialReference reference;
    reference.importFromEPSG(32650);
    char* text = nullptr;
    reference.exportToWkt(&text);
    const std::string system = text;
    CPLFree(text);
    GDALDriver& driver = *GetGDALDriverManager()->GetDriverByName("GTiff");
    std::vector<std::string> paths;
    for (int i = 0; i < kImages; ++i) {
        const std::string below = folder + "/" + std::to_string(i / 100);
        std::filesystem::create_directories(below);
        paths.push_back(below + "/" + std::to_string(i) + ".tif");
        makeImage(driver, system, paths.back(), i);
    }
    return paths;
}

bool readBare(const std::vector<std::string>& paths)
{
    std::array<double, 6> transform{};
    GByte pixel = 0;
    for (const std::string& path : paths) {
        const Dataset image(GDALDataset::Open(path.c_str(), GDAL_OF_RASTER));
        if (!image || image->GetGeoTransform(transform.data()) != CE_None ||
            image->GetSpatialRef() == nullptr ||
            image->GetRasterBand(1)->RasterIO(GF_Read, 0, 0, 1, 1, &pixel, 1, 1, GDT_Byte, 0, 0, nullptr) !=
                CE_None)
            return false;
    }
    return true;
}

bool ingest(const std::string& folder)
{
    const QTemporaryDir place;
    const std::string data = place.filePath("data").toStdString();
    centre::Store::create(data, "LUMO", "demo");
    centre::Store store(data);
    centre::IngestOptions options;
    options.folder = folder;
    options.projectName = "survey";
    options.companyNo = "LUMO";
    return centre::ingest(store, options).counts[centre::IngestedFile::Outcome::Taken] == kImages;
}

} // namespace

int main(int argc, char** argv)
try {
    rows::add("10,000 GeoTIFFs ingested, ns: GDAL opens each", "ingesting:ours_p50", "ingesting:bare_p50",
              rows::Aim::kAtMost, 3);
    const QTemporaryDir images;
    std::vector<std::string> paths;
    return rows::run(argc, argv, [&] {
        GDALAllRegister();
        const std::string folder = images.path().toStdString();
        paths = makeImages(folder);
        benchmark::RegisterBenchmark("ingesting",
                                     [&, folder](benchmark::State& state) {
                                         takeTurns(
                                             state, [&] { return ingest(folder); },
                                             [&] { return readBare(paths); });
                                     })
            ->Iterations(1)
            ->Repetitions(3);
    });
} catch (const std::exception& error) {
    std::cerr << "ingest_bench: " << error.what() << '\n';
    return 1;
}
