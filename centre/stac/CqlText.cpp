#include "centre/stac/CatalogFilter.h"

#include "centre/base/Text.h"
#include "centre/http/Http.h"

#include <algorithm>
#include <cctype>

namespace centre {

namespace {

using nlohmann::json;

constexpr int kDeepestText = 20;

/// Reads an expression in the text form of CQL2:
///   expression = term {OR term};  term = factor {AND factor};  factor = NOT factor | "(" expression ")" |
///   predicate predicate = operand comparison operand | property [NOT] IN "(" value {"," value} ")" |
///   property IS [NOT] NULL
class CqlReader
{
public:
    explicit CqlReader(const std::string& text) : m_Text(text) { next(); }

    json all()
    {
        json expression = disjunction();
        if (m_Kind != Kind::End)
            refuse();
        return expression;
    }

private:
    enum class Kind
    {
        End,
        Word,     ///< a keyword or the name of a property
        Property, ///< a name in double quotes
        Text,     ///< in single quotes
        Sign
    };

    [[noreturn]] void refuse() const
    {
        throw HttpError(400, "the filter is not valid: '" + abbreviated(m_Text.substr(m_Begin)) +
                                 "' is not expected there");
    }

    static bool isNamePart(char character)
    {
        const auto byte = static_cast<unsigned char>(character);
        return std::isalnum(byte) != 0 || character == '_' || character == ':' || character == '.';
    }

    /// Reads the next token.
    void next()
    {
        while (m_At < m_Text.size() && std::isspace(static_cast<unsigned char>(m_Text[m_At])) != 0)
            ++m_At;
        m_Begin = m_At;
        m_Token.clear();
        if (m_At == m_Text.size()) {
            m_Kind = Kind::End;
        } else if (m_Text[m_At] == '\'' || m_Text[m_At] == '"') {
            m_Kind = m_Text[m_At] == '"' ? Kind::Property : Kind::Text;
            quoted();
        } else if (isNamePart(m_Text[m_At])) {
            m_Kind = Kind::Word;
            while (m_At < m_Text.size() && isNamePart(m_Text[m_At]))
                m_Token += m_Text[m_At++];
        } else {
            m_Kind = Kind::Sign;
            m_Token = m_Text[m_At++];
            if ((m_Token == "<" || m_Token == ">") && m_At < m_Text.size() &&
                (m_Text[m_At] == '=' || (m_Token == "<" && m_Text[m_At] == '>')))
                m_Token += m_Text[m_At++];
        }
    }

    /// Reads a text in quotes, of which two are one.
    void quoted()
    {
        const char quote = m_Text[m_At++];
        for (;;) {
            if (m_At == m_Text.size())
                refuse();
            if (m_Text[m_At] == quote && (++m_At == m_Text.size() || m_Text[m_At] != quote))
                return;
            m_Token += m_Text[m_At++];
        }
    }

    bool isWord(const std::string& upper) const
    {
        return m_Kind == Kind::Word && m_Token.size() == upper.size() &&
               std::equal(upper.begin(), upper.end(), m_Token.begin(), [](char one, char other) {
                   return one == std::toupper(static_cast<unsigned char>(other));
               });
    }
    bool takeWord(const std::string& upper)
    {
        const bool taken = isWord(upper);
        if (taken)
            next();
        return taken;
    }
    bool takeSign(const std::string& sign)
    {
        const bool taken = m_Kind == Kind::Sign && m_Token == sign;
        if (taken)
            next();
        return taken;
    }
    void requireSign(const std::string& sign)
    {
        if (!takeSign(sign))
            refuse();
    }
    std::string takeToken()
    {
        std::string token = m_Token;
        next();
        return token;
    }

    static json operation(const char* name, json arguments)
    {
        return {{"op", name}, {"args", std::move(arguments)}};
    }
    static json negated(bool negative, json expression)
    {
        return negative ? operation("not", json::array({std::move(expression)})) : expression;
    }

    json disjunction()
    {
        json terms = json::array({conjunction()});
        while (takeWord("OR"))
            terms.push_back(conjunction());
        return terms.size() == 1 ? terms[0] : operation("or", std::move(terms));
    }

    json conjunction()
    {
        json factors = json::array({factor()});
        while (takeWord("AND"))
            factors.push_back(factor());
        return factors.size() == 1 ? factors[0] : operation("and", std::move(factors));
    }

    json factor()
    {
        if (++m_Depth > kDeepestText)
            refuse();
        json expression;
        if (takeWord("NOT")) {
            expression = negated(true, factor());
        } else if (takeSign("(")) {
            expression = disjunction();
            requireSign(")");
        } else {
            expression = predicate();
        }
        --m_Depth;
        return expression;
    }

    json predicate()
    {
        json left = operand();
        if (takeWord("IS")) {
            const bool negative = takeWord("NOT");
            if (!takeWord("NULL"))
                refuse();
            return negated(negative, operation("isNull", json::array({std::move(left)})));
        }
        const bool negative = takeWord("NOT");
        if (takeWord("IN"))
            return negated(negative, operation("in", json::array({std::move(left), values()})));
        if (negative || m_Kind != Kind::Sign || m_Token == "(" || m_Token == ")" || m_Token == ",")
            refuse();
        const std::string comparison = takeToken();
        return operation(comparison.c_str(), json::array({std::move(left), operand()}));
    }

    json values()
    {
        json list = json::array();
        requireSign("(");
        do
            list.push_back(operand());
        while (takeSign(","));
        requireSign(")");
        return list;
    }

    json operand()
    {
        if (m_Kind == Kind::Text)
            return takeToken();
        const bool isTime = isWord("TIMESTAMP");
        if ((isTime || isWord("DATE")) && m_At < m_Text.size() && m_Text[m_At] == '(') {
            next();
            requireSign("(");
            if (m_Kind != Kind::Text)
                refuse();
            json value = {{isTime ? "timestamp" : "date", takeToken()}};
            requireSign(")");
            return value;
        }
        if (m_Kind != Kind::Property && m_Kind != Kind::Word)
            refuse();
        return {{"property", takeToken()}};
    }

    const std::string& m_Text;
    std::size_t m_At = 0;
    std::size_t m_Begin = 0; ///< of the token
    Kind m_Kind = Kind::End;
    std::string m_Token;
    int m_Depth = 0;
};

} // namespace

json filterFromText(const std::string& text)
{
    return CqlReader(text).all();
}

} // namespace centre
