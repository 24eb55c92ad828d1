// Records of the image catalogue: converting a full bean beside parsing it, and lists from a centre in this
// process beside a bare gRPC generated stub that asks the same centre for the same.

#include "bench/Rows.h"
#include "bench/Turns.h"
#include "bench/World.h"
#include "centre/content/LoadRecords.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>

namespace {

using google::protobuf::FieldDescriptor;
using ledgerserver::DataUtilBeanReq;
using BareStub = World::BareStub;

constexpr int kImages = 100000;
constexpr int kHits = 50000;
constexpr char kSatelliteImages[] = "卫星影像";

struct Conversions : CLumoDataMgr
{
    using CLumoDataMgr::getAdsImageDataFromBean;
    using CLumoDataMgr::getCtrlFileDataFromBean;
    using CLumoDataMgr::getCtrlPointDataFromBean;
    using CLumoDataMgr::getDataFromBean;
    using CLumoDataMgr::getDataTypeFromBean;
    using CLumoDataMgr::getDemDataFromBean;
    using CLumoDataMgr::getDlgDataFromBean;
    using CLumoDataMgr::getDomDataFromBean;
    using CLumoDataMgr::getDsmDataFromBean;
    using CLumoDataMgr::getKFImageDataFromBean;
    using CLumoDataMgr::getSatImageDataFromBean;
};

/// A text for a field: Chinese in names and codes, numbers in numbers, else a short one.
std::string textFor(const std::string& field, int seed)
{
    if (field == "datum")
        return "西安80";
    if (field == "projection")
        return "高斯投影";
    if (field == "hemisphere")
        return "北半球";
    if (field.find("name") != std::string::npos)
        return "北京一号_全色影像_2023_" + std::to_string(seed);
    if (field.rfind("count", 0) == 0)
        return std::to_string(4096 + seed);
    if (field.rfind("value", 0) == 0 || field.rfind("coord_p", 0) == 0 || field.rfind("coord_e", 0) == 0 ||
        field.rfind("point_", 0) == 0)
        return std::to_string(116.391275 + seed);
    return "CLASS-A";
}

/// A bean with a value at each place that a record reads.
template <class Bean>
Bean fullBean()
{
    Bean bean;
    for (int i = 0; i < bean.GetDescriptor()->field_count(); ++i) {
        const FieldDescriptor* field = bean.GetDescriptor()->field(i);
        if (field->cpp_type() == FieldDescriptor::CPPTYPE_INT32)
            bean.GetReflection()->SetInt32(&bean, field, i + 1000);
        else if (field->name().rfind("unread", 0) != 0)
            bean.GetReflection()->SetString(&bean, field, textFor(field->name(), i));
    }
    return bean;
}

template <class Bean, class Record>
void addConversion(const std::string& kind, void (*convert)(const Bean&, Record&))
{
    const Bean bean = fullBean<Bean>();
    const std::string bytes = bean.SerializeAsString();
    benchmark::RegisterBenchmark(("convert_" + kind).c_str(), [bean, convert](benchmark::State& state) {
        static Record record;
        for (auto _ : state) {
            convert(bean, record);
            benchmark::DoNotOptimize(&record);
            benchmark::ClobberMemory();
        }
    });
    benchmark::RegisterBenchmark(("parse_" + kind).c_str(), [bytes](benchmark::State& state) {
        Bean parsed;
        for (auto _ : state)
            benchmark::DoNotOptimize(parsed.ParseFromString(bytes));
    });
    rows::add("converting a full " + kind + ", ns: parsing it", "convert_" + kind, "parse_" + kind,
              rows::Aim::kAtMost, 1.0);
}

void addConversions()
{
    addConversion("project", &Conversions::getDataFromBean);
    addConversion("type", &Conversions::getDataTypeFromBean);
    addConversion("frame photograph", &Conversions::getKFImageDataFromBean);
    addConversion("satellite image", &Conversions::getSatImageDataFromBean);
    addConversion("three-line image", &Conversions::getAdsImageDataFromBean);
    addConversion("control file", &Conversions::getCtrlFileDataFromBean);
    addConversion<ledgerserver::DataSrcControlInfoBean, tagCtrlPointTable>(
        "control point",
        [](const auto& bean, auto& point) { Conversions::getCtrlPointDataFromBean(bean, point, nullptr); });
    addConversion("DEM", &Conversions::getDemDataFromBean);
    addConversion("DSM", &Conversions::getDsmDataFromBean);
    addConversion("DOM", &Conversions::getDomDataFromBean);
    addConversion("DLG", &Conversions::getDlgDataFromBean);
}

/// image_name becomes imageName, main_file_id mainFileID.
std::string recordKey(const std::string& field)
{
    std::string key;
    bool upper = false;
    for (const char c : field) {
        if (c != '_')
            key += upper ? static_cast<char>(std::toupper(c)) : c;
        upper = c == '_';
    }
    const std::size_t id = key.size() < 2 ? 0 : key.size() - 2;
    return key.compare(id, 2, "Id") == 0 ? key.substr(0, id) + "ID" : key;
}

/// Full satellite images of one type; half of them of the sensor that the search asks for.
void addImages(centre::Store& store)
{
    std::stringstream lines;
    lines << R"({"kind":"project","projectID":1,"projectName":"north"})" << '\n'
          << R"({"kind":"type","typeID":1,"projectID":1,"dataType":")" << kSatelliteImages << "\"}\n";
    std::string fields;
    const auto* descriptor = ledgerserver::DataSrcSatBean::descriptor();
    for (int i = 2; i < descriptor->field_count(); ++i) // behind the keys
        if (const std::string& name = descriptor->field(i)->name(); name.rfind("unread", 0) != 0)
            fields += ",\"" + recordKey(name) + "\":\"" + textFor(name, i) + '"';
    for (int i = 0; i < kImages; ++i)
        lines << R"({"kind":"sat","typeID":1,"sensor":")" << (i % 2 ? "PAN" : "MUX") << '"' << fields
              << "}\n";
    centre::loadRecords(store, lines, "made up", [](std::uint64_t) {});
}

bool listImages(QList<tagSatTable>& images)
{
    return World::manager().getSatImageByTypeID(1, images) == RET_SUCCESS && images.size() == kImages;
}

bool fetchImages(const World& world)
{
    DataUtilBeanReq request;
    request.set_type_id(1);
    return world.barePages(&BareStub::queryDataSrcSatByTypeIDTotal, &BareStub::queryDataSrcSatByTypeID,
                           request, &ledgerserver::SatUtilBeanRsp::datasrcsats_size) == kImages;
}

void paging(benchmark::State& state, const World& world)
{
    takeTurns(
        state,
        [] {
            QList<tagSatTable> images;
            return listImages(images);
        },
        [&] { return fetchImages(world); });
}

/// A figure of the kernel's about this process, in bytes.
double memoryFigure(const std::string& name)
{
    std::ifstream lines("/proc/self/status");
    for (std::string line; std::getline(lines, line);)
        if (line.rfind(name + ':', 0) == 0)
            return std::stod(line.substr(name.size() + 1)) * 1024;
    throw std::runtime_error("no figure " + name);
}

/// By how much the memory of this process grew at most during the work.
template <class Work>
double growthDuring(const Work& work)
{
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << 5; // the peak starts anew
    const double before = memoryFigure("VmRSS");
    if (!work())
        throw std::runtime_error("a call failed");
    return memoryFigure("VmHWM") - before;
}

/// The centre is in this process, so both sides hold its page too.
void memory(benchmark::State& state, const World& world)
{
    for ([[maybe_unused]] auto _ : state) {
        QList<tagSatTable> images;
        state.counters["page"] = growthDuring([&] { return fetchImages(world); });
        state.counters["list"] = growthDuring([&] { return listImages(images); });
    }
    state.counters["allowed"] = state.counters["page"] + double(kImages) * sizeof(tagSatTable);
}

void search(benchmark::State& state, const World& world)
{
    takeTurns(
        state,
        [] {
            tagTypeTable type;
            tagQueryCondition condition;
            condition.senType = "PAN";
            QList<tagImageData> images;
            return World::manager().getDataType(1, type) == RET_SUCCESS &&
                   World::manager().searchByDataType(type, condition, images) == RET_SUCCESS &&
                   images.size() == kHits;
        },
        [&] {
            DataUtilBeanReq request;
            request.set_type_id(1);
            request.set_sentype("PAN");
            ledgerserver::SatUtilBeanRsp response;
            return world.bare(&BareStub::searchDataByTypeSat, request, response) &&
                   response.datasrcsats_size() == kHits;
        });
}

} // namespace

int main(int argc, char** argv)
try {
    addConversions();
    rows::add("100,000 full images in pages, ns: fetched and parsed", "paging:ours_p50", "paging:bare_p50",
              rows::Aim::kAtMost, 1.25);
    rows::add("100,000 full images, memory in bytes: records and a page", "memory:list", "memory:allowed",
              rows::Aim::kAtMost, 1.0);
    rows::add("search, 50,000 hits, ns: fetched and parsed", "search:ours_p50", "search:bare_p50",
              rows::Aim::kAtMost, 1.5);
    std::optional<World> world;
    return rows::run(argc, argv, [&] {
        world.emplace(addImages);
        benchmark::RegisterBenchmark("paging", paging, std::cref(*world))->Iterations(2)->Repetitions(5);
        benchmark::RegisterBenchmark("memory", memory, std::cref(*world))->Iterations(1)->Repetitions(3);
        benchmark::RegisterBenchmark("search", search, std::cref(*world))->Iterations(2)->Repetitions(5);
    });
} catch (const std::exception& error) {
    std::cerr << "record_bench: " << error.what() << '\n';
    return 1;
}
