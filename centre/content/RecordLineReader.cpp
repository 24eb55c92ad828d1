#include "centre/content/RecordLineReader.h"

#include "centre/base/Error.h"
#include "centre/base/Text.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <iterator>

namespace centre {

/// Takes the events of the JSON parser.
class RecordLineReader::LineHandler : public nlohmann::json_sax<nlohmann::json>
{
public:
    void read(std::string_view line)
    {
        m_Count = 0;
        m_Depth = 0;
        m_Kind.clear();
        if (!nlohmann::json::sax_parse(line.begin(), line.end(), this))
            throw refusal(m_Reason);
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
        m_Reason = m_Depth == 0   ? "a line must be an object, {...}, not " + what
                   : m_Depth == 1 ? escaped(m_Key) + " can't be " + what
                                  : escaped(m_Key) + " must be numbers and can't hold " + what;
        return false;
    }

    int m_Depth = 0; ///< 1 in the object, 2 in its list of marks
    std::string m_Kind;
    std::string m_Key;
    RecordTexts m_Texts; ///< the first m_Count are the line's
    std::size_t m_Count = 0;
    std::string m_Reason;
};

RecordLineReader::RecordLineReader() : m_Handler(std::make_unique<LineHandler>())
{
}

RecordLineReader::~RecordLineReader() = default;

void RecordLineReader::read(std::string_view line)
{
    m_Handler->read(line);
}

const std::string& RecordLineReader::kind() const
{
    return m_Handler->kind();
}

const RecordTexts& RecordLineReader::texts() const
{
    return m_Handler->texts();
}

} // namespace centre
