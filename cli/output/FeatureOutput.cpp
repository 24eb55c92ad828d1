#include "cli/output/FeatureOutput.h"

#include "cli/output/Footprint.h"

#include "lumo/client/Error.h"

#include <map>
#include <optional>
#include <string>

namespace cli {

namespace {

/// The footprints of files, each asked for once.
class Footprints
{
public:
    explicit Footprints(const lumo::Catalogue& catalogue) : m_Catalogue(catalogue) {}

    const std::optional<Footprint>& of(lumo::FileId file)
    {
        const auto [found, isNew] = m_Known.try_emplace(file.number());
        if (!isNew || file.number() == kNoIdentifier)
            return found->second;
        try {
            found->second = footprintOf(m_Catalogue.find(file));
        } catch (const lumo::Error& error) {
            if (error.kind() != lumo::Error::Kind::NotFound)
                throw;
        }
        return found->second;
    }

private:
    const lumo::Catalogue& m_Catalogue;
    std::map<unsigned int, std::optional<Footprint>> m_Known;
};

Json featureOf(const lumo::Record& record, const std::vector<std::string>& names,
               const std::vector<std::string>& common, const std::optional<Footprint>& footprint)
{
    Json feature{
        {"type", "Feature"},
        {"id", std::string(lumo::Record::word(record.kind())) + ":" + std::to_string(record.id().number())}};
    if (footprint)
        feature["bbox"] = boundsJson(*footprint);
    feature["geometry"] = geometryJson(footprint);
    Json properties = Json::object();
    for (std::size_t i = 0; i < names.size() && i < common.size(); ++i)
        properties[names[i]] = common[i];
    for (const lumo::Record::Field& field : record.fields())
        properties[field.name] = jsonOf(field.value);
    feature["properties"] = std::move(properties);
    return feature;
}

} // namespace

void printFeatures(const RecordLists& lists, const lumo::Catalogue& catalogue)
{
    Footprints footprints(catalogue);
    std::string text;
    for (const RecordList& list : lists.lists)
        for (const lumo::Record& record : list.records) {
            std::string line = jsonLine(
                featureOf(record, lists.commonNames, list.common, footprints.of(record.mainFileId())));
            line.pop_back(); // the end of the line
            text += (text.empty() ? "\n" : ",\n") + line;
        }
    print("{\"type\":\"FeatureCollection\",\"features\":[" + text + "\n]}\n");
}

} // namespace cli
