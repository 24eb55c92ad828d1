#include "cli/commands/ImageNames.h"

#include "cli/base/ExitCode.h"

#include <algorithm>
#include <charconv>

namespace cli {

unsigned int parseIdentifier(const std::string& text, const std::string& what)
{
    unsigned int id = kNoIdentifier;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, id);
    if (error != std::errc() || stop != end || id == kNoIdentifier)
        refuse("'" + text + "' is not a " + what + " identifier: write its number");
    return id;
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

} // namespace cli
