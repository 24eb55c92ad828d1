#include "centre/stac/MediaType.h"

#include <algorithm>
#include <cctype>
#include <map>

namespace centre {

namespace {

/// The end of a name after its last dot, in lower case.
std::string extensionOf(const std::string& name)
{
    std::string extension = name.substr(std::min(name.rfind('.'), name.size() - 1) + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return extension;
}

} // namespace

std::string mediaTypeOf(const std::string& name, const std::string& format)
{
    static const std::map<std::string, std::string> types = {{"csv", "text/csv"},
                                                             {"gif", "image/gif"},
                                                             {"gpkg", "application/geopackage+sqlite3"},
                                                             {"h5", "application/x-hdf5"},
                                                             {"htm", "text/html"},
                                                             {"html", "text/html"},
                                                             {"jp2", "image/jp2"},
                                                             {"jpeg", "image/jpeg"},
                                                             {"jpg", "image/jpeg"},
                                                             {"json", "application/json"},
                                                             {"geojson", "application/geo+json"},
                                                             {"nc", "application/x-netcdf"},
                                                             {"pdf", "application/pdf"},
                                                             {"png", "image/png"},
                                                             {"tif", "image/tiff"},
                                                             {"tiff", "image/tiff"},
                                                             {"txt", "text/plain"},
                                                             {"webp", "image/webp"},
                                                             {"xml", "application/xml"},
                                                             {"zip", "application/zip"}};
    if (format.rfind("GTiff ", 0) == 0)
        return "image/tiff; application=geotiff";
    const auto type = types.find(extensionOf(name));
    return type == types.end() ? "application/octet-stream" : type->second;
}

const char* roleBeside(const std::string& name)
{
    const std::string type = mediaTypeOf(name, {});
    return extensionOf(name) == "ovr" || type.rfind("image/", 0) == 0 ? "overview" : "metadata";
}

} // namespace centre
