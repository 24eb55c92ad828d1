#include "centre/content/Load.h"

#include "centre/store/BulkInsertion.h"
#include "centre/store/Error.h"
#include "centre/store/Store.h"
#include "centre/store/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <iterator>

namespace centre {

namespace {

constexpr std::size_t kLongestLine = 1 << 20;

/// Takes one line's object apart into texts. Used again for each line, so that memory is taken once.
class LineReader : public nlohmann::json_sax<nlohmann::json>
{
public:
    /// Throws Error.
    void read(const char* begin, const char* end)
    {
        m_Count = 0;
        m_Depth = 0;
        m_Kind.clear();
        if (!nlohmann::json::sax_parse(begin, end, this))
            throw Error(ExitCode::Failed, m_Reason);
        m_Texts.resize(m_Count);
    }

    const std::string& kind() const { return m_Kind; }
    const RecordTexts& texts() const { return m_Texts; }

    bool null() override { return m_Depth == 1 || refuse("null"); }
    bool boolean(bool) override { return refuse("true or false"); }
    bool number_integer(number_integer_t value) override { return number(value); }
    bool number_unsigned(number_unsigned_t value) override { return number(value); }
    bool number_float(number_float_t value, const string_t&) override { return number(value); }
    bool binary(binary_t&) override { return refuse("binary data"); }
    bool string(string_t& value) override { return m_Depth == 1 ? take(std::move(value)) : refuse("a text"); }

    bool start_object(std::size_t) override
    {
        if (m_Depth > 0)
            return refuse("an object");
        m_Depth = 1;
        return true;
    }
    bool end_object() override { return true; }
    bool key(string_t& value) override
    {
        m_Key.swap(value);
        return true;
    }
    bool start_array(std::size_t) override
    {
        if (m_Depth != 1 || m_Key != "marks")
            return refuse("a list");
        m_Depth = 2;
        return take("");
    }
    bool end_array() override
    {
        m_Depth = 1;
        return true;
    }
    bool parse_error(std::size_t position, const std::string&, const nlohmann::json::exception&) override
    {
        m_Reason = "not JSON from byte " + std::to_string(position) + " on";
        return false;
    }

private:
    /// The shortest text that is read as the same number.
    template <class Number>
    bool number(Number value)
    {
        if (m_Depth == 0)
            return refuse("a number");
        char digits[32];
        const std::string text(std::begin(digits), std::to_chars(digits, std::end(digits), value).ptr);
        if (m_Depth == 1)
            return take(text);
        std::string& marks = m_Texts[m_Count - 1].second;
        marks += (marks.empty() ? "" : ",") + text;
        return true;
    }

    bool take(std::string value)
    {
        if (m_Key == "kind") {
            m_Kind = std::move(value);
            return true;
        }
        if (m_Count == m_Texts.size())
            m_Texts.emplace_back();
        m_Texts[m_Count].first = m_Key;
        m_Texts[m_Count].second = std::move(value);
        ++m_Count;
        return true;
    }

    bool refuse(const std::string& what)
    {
        m_Reason = m_Depth == 0   ? "a line is an object, {...}, not " + what
                   : m_Depth == 1 ? escaped(m_Key) + " can't be " + what
                                  : escaped(m_Key) + " are numbers and can't hold " + what;
        return false;
    }

    int m_Depth = 0; ///< 1 in the object, 2 in its list of marks
    std::string m_Kind;
    std::string m_Key;
    RecordTexts m_Texts; ///< the first m_Count are the line's
    std::size_t m_Count = 0;
    std::string m_Reason;
};

const RecordKind& kindOf(const std::string& name)
{
    if (const RecordKind* kind = findKind(name))
        return *kind;
    std::string names;
    for (const RecordKind& kind : recordKinds())
        names += (names.empty() ? "" : ", ") + kind.name;
    throw Error(ExitCode::Failed, (name.empty() ? "kind is missing" : "there is no kind " + escaped(name)) +
                                      "; the kinds are " + names);
}

} // namespace

RecordCounts loadRecords(Store& store, std::istream& lines, const std::string& name,
                         const std::function<void(std::uint64_t)>& progress)
{
    BulkInsertion insertion(store.database(), progress);
    LineReader reader;
    std::string line(kLongestLine + 1, '\0');
    std::uint64_t number = 0;
    try {
        for (number = 1;
             lines.getline(line.data(), static_cast<std::streamsize>(line.size())) || lines.gcount() > 0;
             ++number) {
            if (lines.fail())
                throw Error(ExitCode::Failed,
                            "the line is longer than " + std::to_string(kLongestLine) + " bytes");
            const char* end = line.data() + lines.gcount() - (lines.eof() ? 0 : 1);
            if (std::all_of(static_cast<const char*>(line.data()), end,
                            [](char c) { return c == ' ' || c == '\t' || c == '\r'; }))
                continue;
            reader.read(line.data(), end);
            insertion.add(kindOf(reader.kind()), reader.texts());
        }
    } catch (const Error& error) {
        throw Error(error.code(), name + ":" + std::to_string(number) + ": " + error.what());
    }
    if (lines.bad())
        throw Error(ExitCode::Failed, "can't read " + name);
    return insertion.finish();
}

std::string countsText(const RecordCounts& counts)
{
    std::string text;
    for (const RecordKind& kind : recordKinds())
        if (const auto count = counts.find(kind.name); count != counts.end())
            text += (text.empty() ? "" : ", ") + std::to_string(count->second) + " " + kind.name;
    return text.empty() ? "nothing" : text;
}

} // namespace centre
