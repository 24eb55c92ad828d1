#include "centre/image/process/SceneTexts.h"

#include "centre/image/process/SceneFolder.h"

#include <cpl_string.h>

#include <cstring>
#include <string>

namespace centre {

namespace {

constexpr int kMostFiles = 1000;

struct Field
{
    const char* domain;
    const char* name;
};

// GDAL's readers for satellites and for NITF, DIMAP, EXIF; the time of a file (TIFFTAG_DATETIME) is another
// one.
constexpr Field kDates[] = {{"IMAGERY", "ACQUISITIONDATETIME"}, {nullptr, "IMAGING_DATE"},
                            {nullptr, "NITF_IDATIM"},           {nullptr, "EXIF_DateTimeOriginal"},
                            {nullptr, "ACQUISITION_DATE"},      {nullptr, "SENSING_START"}};
constexpr Field kSensors[] = {{"IMAGERY", "SATELLITEID"},
                              {nullptr, "NITF_ISORCE"},
                              {nullptr, "EXIF_Model"},
                              {nullptr, "SPACECRAFT_NAME"},
                              {nullptr, "SENSOR_ID"}};

std::string textOf(GDALDataset& dataset, const Field& field)
{
    const char* text = dataset.GetMetadataItem(field.name, field.domain);
    std::string value = text != nullptr ? text : "";
    value.erase(0, value.find_first_not_of(" \""));
    value.erase(value.find_last_not_of(" \"") + 1);
    return value;
}

/// The day at the start of a time, YYYY-MM-DD: 2013-05-18T03:01:20, 2013:05:18 03:01:20, 20130518030120.
/// Empty for any other text.
std::string dayOf(const std::string& text)
{
    constexpr std::size_t kDigits = 8;
    std::string digits;
    for (std::size_t i = 0; i < text.size() && digits.size() < kDigits; ++i)
        if (text[i] >= '0' && text[i] <= '9')
            digits += text[i];
        else if (digits.size() != 4 && digits.size() != 6)
            return {};
    return digits.size() == kDigits ? digits.substr(0, 4) + "-" + digits.substr(4, 2) + "-" + digits.substr(6)
                                    : "";
}

/// "SPOT 6": DIMAP has mission and its number apart.
std::string missionOf(GDALDataset& dataset)
{
    std::string mission = textOf(dataset, {nullptr, "MISSION"});
    const std::string number = textOf(dataset, {nullptr, "MISSION_INDEX"});
    return mission.empty() || number.empty() ? mission : mission + " " + number;
}

} // namespace

void describeScene(GDALDataset& dataset, image::Image& facts)
{
    for (const Field& field : kDates)
        if (facts.date().empty())
            facts.set_date(dayOf(textOf(dataset, field)));
    facts.set_sensor(CPLIsUTF8(missionOf(dataset).c_str(), -1) ? missionOf(dataset) : "");
    for (const Field& field : kSensors)
        if (const std::string text = textOf(dataset, field);
            facts.sensor().empty() && CPLIsUTF8(text.c_str(), -1) != 0)
            facts.set_sensor(text);

    const CPLStringList files(dataset.GetFileList());
    for (int i = 0; i < files.Count() && i < kMostFiles; ++i)
        if (const std::string file = files[i]; file.rfind(kSceneRoot, 0) == 0 && CPLIsUTF8(files[i], -1) != 0)
            facts.add_files(file.substr(std::strlen(kSceneRoot)));
}

} // namespace centre
