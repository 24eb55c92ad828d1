#include "cli/Place.h"

#include "cli/ExitCode.h"
#include "cli/output/DisplayText.h"

#include "lumo/components/platform/Utf8.h"

#include <charconv>

namespace cli {

namespace {

[[noreturn]] void refusePlace(const std::string& text)
{
    refuse("'" + text +
           "' is not a valid place: write a path such as /disk/folder/file, or an identifier such as "
           "disk:1, folder:12 or file:33");
}

bool readKind(const std::string& text, Place::Kind& kind)
{
    static const struct
    {
        const char* text;
        Place::Kind kind;
    } kKinds[] = {{"disk", Place::Kind::Disk}, {"folder", Place::Kind::Folder}, {"file", Place::Kind::File}};
    for (const auto& known : kKinds) {
        if (text == known.text) {
            kind = known.kind;
            return true;
        }
    }
    return false;
}

Place parseIdentifier(const std::string& text)
{
    const std::size_t colon = text.find(':');
    Place place;
    if (colon == std::string::npos || !readKind(text.substr(0, colon), place.kind))
        refusePlace(text);
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + colon + 1, end, place.id);
    // The largest number means "none" everywhere in the catalogue.
    if (error != std::errc() || stop != end || place.id == 0xFFFFFFFFU)
        refusePlace(text);
    return place;
}

} // namespace

Place parsePlace(const std::string& text)
{
    if (!platform::isUtf8(text) || text.empty())
        refusePlace(text);
    if (text.front() != '/')
        return parseIdentifier(text);
    Place place;
    place.folderOnly = text.back() == '/';
    for (std::size_t begin = 1; begin < text.size();) {
        const std::size_t end = std::min(text.find('/', begin), text.size());
        if (end > begin)
            place.components.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return place;
}

std::string identifierText(const char* kind, unsigned int id)
{
    return id == 0xFFFFFFFFU ? std::string("-") : std::string(kind) + ":" + std::to_string(id);
}

} // namespace cli
