#include "centre/image/process/SceneMetadata.h"

#include "centre/base/Error.h"
#include "centre/base/Text.h"
#include "lumo/components/platform/Utf8.h"

#include <pugixml.hpp>

#include <algorithm>
#include <map>
#include <strings.h>

namespace centre {

namespace {

constexpr char kBlanks[] = " \t\r\n";

std::string trimmed(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

void requireText(const std::string& text)
{
    if (!platform::isUtf8(text) || text.find('\0') != std::string::npos)
        throw refusal("the file is not text in UTF-8");
}

/// Throws for a reference to the character 0, which XML does not allow and where the parser would end a text.
void requireNoNul(const std::string& xml)
{
    for (std::size_t at = xml.find("&#"); at != std::string::npos; at = xml.find("&#", at + 2)) {
        const std::size_t digits = at + (xml.compare(at, 3, "&#x") == 0 ? 3 : 2);
        const std::size_t end = std::min(xml.find_first_not_of('0', digits), xml.size());
        if (end > digits && xml[end] == ';')
            throw refusal("damaged XML at byte " + std::to_string(at) + ": the character 0");
    }
}

/// A DIMAP document. Entities of its own are refused: the format has none.
class Dimap
{
public:
    explicit Dimap(const std::string& xml)
    {
        requireNoNul(xml);
        const pugi::xml_parse_result result =
            m_Document.load_buffer(xml.data(), xml.size(), pugi::parse_default | pugi::parse_doctype);
        if (!result)
            throw refusal("damaged XML at byte " + std::to_string(result.offset) + ": " +
                          result.description());
        for (const pugi::xml_node node : m_Document.children())
            if (node.type() == pugi::node_doctype &&
                std::string(node.value()).find("<!ENTITY") != std::string::npos)
                throw refusal("the XML declares entities, which are not supported");
        if (!m_Document.child("Dimap_Document"))
            throw refusal("not a DIMAP document");
    }

    std::string text(const char* path) const
    {
        std::string value =
            trimmed(m_Document.child("Dimap_Document").first_element_by_path(path).text().get());
        if (value.empty())
            throw refusal(std::string("the DIMAP document has no ") + path);
        requireText(value);
        return value;
    }

    /// The files that the elements of that name refer to, in their order and with repetitions.
    std::vector<std::string> files(const char* element) const
    {
        std::vector<std::string> names;
        for (const pugi::xpath_node& each :
             m_Document.select_nodes(("//" + std::string(element) + "/@href").c_str()))
            names.push_back(trimmed(each.attribute().value()));
        return names;
    }

private:
    pugi::xml_document m_Document;
};

/// Calls `take` with each line that holds more than blanks.
template <class Take>
void forEachLine(const std::string& text, Take take)
{
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        if (const std::string line = trimmed(text.substr(start, end - start)); !line.empty())
            take(line);
        start = end + 1;
    }
}

bool isProductFile(const std::string& key)
{
    const std::string stem = "ProductFileName";
    const std::size_t place = key.find(stem);
    return key.rfind("Pdi_", 0) == 0 && place != std::string::npos && place + stem.size() < key.size() &&
           key.find_first_not_of("0123456789", place + stem.size()) == std::string::npos;
}

struct IgnoreCase
{
    bool operator()(const std::string& one, const std::string& other) const
    {
        return ::strcasecmp(one.c_str(), other.c_str()) < 0;
    }
};

} // namespace

Scene readSpot5Dim(const std::string& xml)
{
    const Dimap dimap(xml);
    return {dimap.text("Dataset_Id/DATASET_NAME"), dimap.files("DATA_FILE_PATH"), {}};
}

Scene readSpot6Dim(const std::string& xml)
{
    const Dimap dimap(xml);
    return {dimap.text("Dataset_Identification/DATASET_NAME"), dimap.files("DATA_FILE_PATH"),
            dimap.files("COMPONENT_PATH")};
}

Scene readAlosSummary(const std::string& text)
{
    requireText(text);
    Scene scene;
    forEachLine(text, [&scene](const std::string& line) {
        const std::size_t sign = line.find("=\"");
        if (sign == std::string::npos || sign + 2 == line.size() || line.back() != '"')
            throw refusal("a line of a summary must be key=\"value\", not " + abbreviated(line));
        const std::string key = line.substr(0, sign);
        const std::string value = trimmed(line.substr(sign + 2, line.size() - sign - 3));
        if (key == "Scs_SceneID")
            scene.name = value;
        else if (isProductFile(key))
            (value.rfind("IMG-", 0) == 0 ? scene.mainFiles : scene.metaFiles).push_back(value);
    });
    if (scene.name.empty())
        throw refusal("the summary has no Scs_SceneID");
    return scene;
}

std::array<std::string, 6> readAdsSup(const std::string& text)
{
    requireText(text);
    std::map<std::string, std::string, IgnoreCase> values;
    forEachLine(text, [&values](const std::string& line) {
        const std::size_t end = std::min(line.find_first_of(" \t=:"), line.size());
        const std::size_t value = line.find_first_not_of(" \t=:", end);
        values.emplace(line.substr(0, end), value == std::string::npos ? "" : line.substr(value));
    });
    if (values["IMAGE_ID"].empty())
        throw refusal("the sup file has no IMAGE_ID");
    return {values["IMAGE_ID"],         values["SENSOR_TYPE"],      values["IMAGE_FILE"],
            values["ORIENTATION_FILE"], values["CALIBRATION_FILE"], values["DATE_TIME"]};
}

} // namespace centre
