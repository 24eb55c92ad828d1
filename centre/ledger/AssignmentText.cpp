#include "centre/ledger/AssignmentText.h"

#include "centre/base/Error.h"
#include "centre/base/Text.h"
#include "lumo/components/platform/Utf8.h"

#include <algorithm>
#include <unordered_map>

namespace centre {

namespace {

std::pair<std::string, std::string> parsePiece(const std::string& piece)
{
    const std::size_t closing = piece.rfind('\'');
    if (closing != std::string::npos && closing >= 2) {
        const std::size_t sign = piece.rfind("='", closing - 2);
        if (sign != std::string::npos)
            return {piece.substr(0, sign), piece.substr(sign + 2, closing - sign - 2)};
    }
    throw refusal("a record must be key='value',key='value', not \"" + abbreviated(piece) + "\"");
}

} // namespace

RecordTexts parseAssignments(const std::string& text)
{
    if (!platform::isUtf8(text))
        throw Error(ExitCode::Failed, "the record's text is not UTF-8");
    RecordTexts texts;
    std::unordered_map<std::string, std::size_t> places;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(',', start), text.size());
        auto [key, value] = parsePiece(text.substr(start, end - start));
        const auto [place, isNew] = places.emplace(key, texts.size());
        if (isNew)
            texts.emplace_back(std::move(key), std::move(value));
        else
            texts[place->second].second = std::move(value);
        start = end + 1;
    }
    return texts;
}

} // namespace centre
