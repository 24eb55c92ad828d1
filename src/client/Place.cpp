#include "lumo/client/Place.h"

#include "client/Link.h"
#include "lumo/components/platform/Utf8.h"

#include <algorithm>
#include <charconv>

namespace lumo {

namespace {

[[noreturn]] void refusePlace(const std::string& text)
{
    internal::refuse(
        "'" + text +
        "' is not a valid place: write a path such as /disk/folder/file, or an identifier such as "
        "disk:1, folder:12 or file:33");
}

Place::Kind kindOf(const std::string& word, const std::string& text)
{
    static const struct
    {
        const char* word;
        Place::Kind kind;
    } kKinds[] = {{"disk", Place::Kind::Disk}, {"folder", Place::Kind::Folder}, {"file", Place::Kind::File}};
    for (const auto& known : kKinds)
        if (word == known.word)
            return known.kind;
    refusePlace(text);
}

} // namespace

Place::Place(const std::string& text)
{
    if (!platform::isUtf8(text) || text.empty())
        refusePlace(text);
    if (text.front() != '/') {
        const std::size_t colon = std::min(text.find(':'), text.size() - 1);
        m_Kind = kindOf(text.substr(0, colon), text);
        const char* const end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data() + colon + 1, end, m_Number);
        if (error != std::errc() || stop != end || m_Number == kNoIdentifier)
            refusePlace(text);
        return;
    }
    m_MustBeFolder = text.back() == '/';
    for (std::size_t begin = 1; begin < text.size();) {
        const std::size_t end = std::min(text.find('/', begin), text.size());
        if (end > begin)
            m_Names.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
}

Place Place::parent() const
{
    Place above = *this;
    above.m_Names.pop_back();
    above.m_MustBeFolder = false;
    return above;
}

} // namespace lumo
