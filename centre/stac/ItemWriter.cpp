#include "centre/stac/ItemWriter.h"

#include "centre/stac/Instant.h"
#include "centre/stac/ItemSql.h"
#include "centre/stac/JsonText.h"
#include "centre/stac/MediaType.h"

#include <cstdlib>
#include <regex>

namespace centre {

namespace {

constexpr double kEastOfAll = 180;

std::string quotedText(const std::string& text)
{
    std::string quoted;
    appendQuoted(quoted, text);
    return quoted;
}

std::string linkText(const char* relation, const std::string& address, const char* mediaType)
{
    return "{\"rel\":\"" + std::string(relation) + "\",\"href\":" + quotedText(address) + ",\"type\":\"" +
           mediaType + "\"}";
}

/// A ring of positions, counterclockwise.
std::string ring(const std::string& west, const std::string& south, const std::string& east,
                 const std::string& north)
{
    return "[[[" + west + "," + south + "],[" + east + "," + south + "],[" + east + "," + north + "],[" +
           west + "," + north + "],[" + west + "," + south + "]]]";
}

/// Writes geometry and bounding box. What crosses the date line is cut there in two.
void writePlace(std::string& output, Statement& row)
{
    if (!row.text(kWest)) {
        output += ",\"geometry\":null";
        return;
    }
    const std::string west = row.string(kWest);
    const std::string south = row.string(kSouth);
    std::string east = row.string(kEast);
    const std::string north = row.string(kNorth);
    const double eastNumber = std::strtod(east.c_str(), nullptr);
    if (eastNumber > kEastOfAll) {
        east = nlohmann::json(eastNumber - 2 * kEastOfAll).dump();
        output += R"(,"geometry":{"type":"MultiPolygon","coordinates":[)" + ring(west, south, "180", north) +
                  "," + ring("-180", south, east, north) + "]}";
    } else {
        output += R"(,"geometry":{"type":"Polygon","coordinates":)" + ring(west, south, east, north) + "}";
    }
    output += ",\"bbox\":[" + west + "," + south + "," + east + "," + north + "]";
}

/// A record without a date may be of any day.
void writeTimes(std::string& output, Statement& row)
{
    const auto date = row.text(kDate);
    const std::string first = date ? std::string(*date) : kFirstOfDays;
    const std::string last = date ? first : kLastOfDays;
    output += "\"datetime\":" + (date ? "\"" + first + kBeginOfDay + "\"" : "null");
    output += ",\"start_datetime\":\"" + first + kBeginOfDay;
    output += "\",\"end_datetime\":\"" + last + kEndOfDay + "\"";
}

void writeAsset(std::string& output, const char* key, const std::string& address,
                const std::string& mediaType, const char* role)
{
    output += key;
    output += ":{\"href\":";
    appendQuoted(output, address);
    output += ",\"type\":\"" + mediaType + "\",\"roles\":[\"" + role + "\"]";
}

const char* extensions(bool hasProjection, bool hasSize)
{
    if (hasProjection)
        return hasSize ? R"(["https://stac-extensions.github.io/projection/v1.1.0/schema.json",)"
                         R"("https://stac-extensions.github.io/file/v2.1.0/schema.json"])"
                       : R"(["https://stac-extensions.github.io/projection/v1.1.0/schema.json"])";
    return hasSize ? R"(["https://stac-extensions.github.io/file/v2.1.0/schema.json"])" : "[]";
}

} // namespace

std::string projectionProperties(const std::string& format, const std::string& placement)
{
    static const std::regex shapeForm(R"(\S+ (\d{1,9})x(\d{1,9})x\d+)");
    static const std::regex placeForm(
        R"((EPSG:(\d{1,9})|local) west (\S+) south (\S+) east (\S+) north (\S+))");
    constexpr int kNumber = 2;
    constexpr int kFirstBound = 3;
    constexpr int kBounds = 4;
    constexpr std::size_t kLongest = 400;
    std::smatch place;
    if (placement.size() > kLongest || !std::regex_match(placement, place, placeForm))
        return {};
    std::string output =
        ",\"proj:epsg\":" + (place[kNumber].matched ? place[kNumber].str() : "null") + ",\"proj:bbox\":[";
    for (int i = kFirstBound; i < kFirstBound + kBounds; ++i) {
        if (!isJsonNumber(place[i].str()))
            return {};
        output += (i > kFirstBound ? "," : "") + place[i].str();
    }
    output += "]";
    std::smatch shape;
    if (format.size() < kLongest && std::regex_match(format, shape, shapeForm))
        output += ",\"proj:shape\":[" + shape[2].str() + "," + shape[1].str() + "]";
    return output;
}

ItemWriter::ItemWriter(const Collection& collection, const std::string& root, const DiskBoxes& disks,
                       const AssetAddressesOf& addressesOf)
    : m_Kind(*collection.kind),
      m_Disks(disks),
      m_AddressesOf(addressesOf),
      m_Self(root + "/collections/" + collection.id() + "/items/" + m_Kind.name + "-")
{
    const std::string parent = root + "/collections/" + collection.id();
    m_CollectionAndRoot = linkText("collection", parent, kJson) + "," + linkText("parent", parent, kJson) +
                          "," + linkText("root", root, kJson);
    m_Start = ",\"collection\":\"" + collection.id() +
              "\",\"properties\":{\"project\":" + quotedText(collection.project) +
              ",\"data_type\":" + quotedText(collection.dataType) + ",";
    for (const Column* field : itemFields(m_Kind))
        m_FieldNames.push_back(",\"lumo:" + field->key + "\":");
}

void ItemWriter::writeProperties(std::string& output, Statement& row, const std::string& projection) const
{
    output += m_Start;
    writeTimes(output, row);
    if (const auto title = row.text(kTitle)) {
        output += ",\"title\":";
        appendQuoted(output, *title);
    }
    if (const auto sensor = row.text(kSensor)) {
        std::string quoted;
        appendQuoted(quoted, *sensor);
        output += ",\"sensor\":" + quoted + ",\"instruments\":[" + quoted + "]";
    }
    for (std::size_t i = 0; i < m_FieldNames.size(); ++i)
        if (const auto value = row.text(kFirstItemField + static_cast<int>(i))) {
            output += m_FieldNames[i];
            appendNumberOrText(output, *value);
        }
    output += projection;
    output += "}";
}

ItemDraft ItemWriter::write(Statement& row) const
{
    const std::string id = row.string(kItemId);
    const auto disk = m_Disks.find(row.id(kDisk));
    const bool hasFile = row.text(kFileName) && disk != m_Disks.end();
    const auto size = row.integer(kFileSize);
    std::string projection;
    if (hasFile && row.text(kFilePlacement))
        projection = projectionProperties(row.string(kFileFormat), row.string(kFilePlacement));

    ItemDraft item;
    std::string& output = item.json;
    constexpr std::size_t kUsualSize = 2048;
    output.reserve(kUsualSize);
    output += R"({"type":"Feature","stac_version":"1.0.0","stac_extensions":)";
    output += extensions(!projection.empty(), hasFile && size);
    output += ",\"id\":\"" + m_Kind.name + "-" + id + "\"";
    writePlace(output, row);
    writeProperties(output, row, projection);
    output += ",\"links\":[" + linkText("self", m_Self + id, kGeoJson) + "," + m_CollectionAndRoot +
              "],\"assets\":{";
    if (!hasFile)
        return item;
    item.mainFile = row.id(kMainFile);
    item.folderId = row.id(kFolder);
    item.box = disk->second;
    const AssetFile file{item.folderId, row.string(kFileName), item.box};
    const AssetAddresses addresses = m_AddressesOf(file);
    writeAsset(output, "\"data\"", addresses.file, mediaTypeOf(file.name, row.string(kFileFormat)), "data");
    output += ",\"title\":";
    appendQuoted(output, file.name);
    if (const auto format = row.text(kFileFormat)) {
        output += ",\"description\":";
        appendQuoted(output, *format);
    }
    if (const auto digest = row.text(kFileDigest)) {
        output += ",\"lumo:digest\":";
        appendQuoted(output, *digest);
    }
    output += (size ? ",\"file:size\":" + std::to_string(*size) : "") + "}";
    if (!addresses.quickLook.empty()) {
        writeAsset(output, ",\"thumbnail\"", addresses.quickLook, "image/jpeg", "thumbnail");
        output += "}";
    }
    return item;
}

void appendAsset(ItemDraft& item, const AssetFile& file, std::optional<std::int64_t> size,
                 const AssetAddressesOf& addressesOf)
{
    item.json += ",";
    writeAsset(item.json, quotedText(file.name).c_str(), addressesOf(file).file, mediaTypeOf(file.name, {}),
               roleBeside(file.name));
    if (size)
        item.json += ",\"file:size\":" + std::to_string(*size);
    item.json += "}";
}

std::string finished(ItemDraft item)
{
    return std::move(item.json) + "}}";
}

} // namespace centre
