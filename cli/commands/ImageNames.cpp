#include "cli/commands/ImageNames.h"

#include "cli/base/ExitCode.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace cli {

namespace {

std::optional<unsigned int> identifierOf(const std::string& text)
{
    unsigned int id = kNoIdentifier;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, id);
    return error == std::errc() && stop == end && id != kNoIdentifier ? std::optional(id) : std::nullopt;
}

} // namespace

unsigned int parseIdentifier(const std::string& text, const std::string& what)
{
    const auto id = identifierOf(text);
    if (!id)
        refuse("'" + text + "' is not a " + what + " identifier: write its number");
    return *id;
}

bool isImageKind(const std::string& word)
{
    const auto& kinds = lumo::Record::imageKinds();
    const auto kind = lumo::Record::kindOf(word);
    return kind && std::count(kinds.begin(), kinds.end(), *kind) > 0;
}

lumo::Record::Kind parseImageKind(const std::string& word)
{
    if (!isImageKind(word))
        refuse("'" + word + "' is not a kind of record; the kinds are " + imageKindWords());
    return *lumo::Record::kindOf(word);
}

std::string imageKindWords(bool marked)
{
    std::string words;
    for (const lumo::Record::Kind kind : lumo::Record::imageKinds())
        if (!marked || lumo::Images::canBeMarked(kind))
            words += (words.empty() ? "" : ", ") + std::string(lumo::Record::word(kind));
    return words;
}

TypeName parseType(const std::string& text)
{
    TypeName type;
    const std::size_t slash = text.rfind('/');
    if (slash != std::string::npos) {
        type.project = text.substr(0, slash);
        type.name = text.substr(slash + 1);
    } else if (const auto id = identifierOf(text)) {
        type.id = lumo::TypeId(*id);
    } else {
        refuse("'" + text + "' is not a type: write its number, or PROJECT/TYPENAME as in north/DEM");
    }
    return type;
}

lumo::Record findType(const lumo::Images& images, const TypeName& type)
{
    return type.id.isSet() ? images.type(type.id)
                           : images.type(images.project(type.project).projectId(), type.name);
}

} // namespace cli
