#ifndef LUMO_CENTRE_STAC_MEDIATYPE_H
#define LUMO_CENTRE_STAC_MEDIATYPE_H

#include <string>

namespace centre {

/// Returns the media type of a file by the end of its name. `format` is what an analysis noted of an image,
/// "GTiff 320x180x3", or empty.
std::string mediaTypeOf(const std::string& name, const std::string& format);

/// Returns STAC's role of a file beside an image: "overview" for pictures and smaller versions, or
/// "metadata".
const char* roleBeside(const std::string& name);

} // namespace centre

#endif
