// Plays the files of the folder exchanges/, whose form is explained in its file FORM.

#include "centre/content/Version.h"
#include "tests/centre/CentreSupport.h"
#include "tests/support/Script.h"

#include <google/protobuf/stubs/strutil.h>

#include <functional>
#include <iterator>
#include <map>
#include <regex>

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

/// The text before `separator`, without blanks at its ends; the rest goes to `text`.
std::string cut(std::string& text, const std::string& separator)
{
    const auto trimmed = [](const std::string& from) {
        const std::size_t begin = from.find_first_not_of(' ');
        return begin == std::string::npos ? "" : from.substr(begin, from.find_last_not_of(' ') - begin + 1);
    };
    const std::size_t end = text.find(separator);
    std::string head = trimmed(text.substr(0, end));
    text = end == std::string::npos ? "" : trimmed(text.substr(end + separator.size()));
    return head;
}

class Exchanges : public CentreTest, public testing::WithParamInterface<std::string>
{
protected:
    void play(const std::string& line)
    {
        std::string rest = replaced(line);
        const std::string verb = cut(rest, " ");
        if (m_SetUps.count(verb) != 0)
            return m_SetUps.at(verb)(rest);
        if (m_NamedSetUps.count(verb) == 0)
            return exchange(verb, rest);
        const std::string name = cut(rest, " ");
        m_NamedSetUps.at(verb)(name, rest);
    }

private:
    using Words = std::vector<std::string>;

    /// With $NAME replaced by its text, and {disk/folder/file} by its identifier.
    std::string replaced(std::string line)
    {
        std::smatch found;
        while (std::regex_search(line, found, std::regex("\\$(\\w+)")))
            line = found.prefix().str() + m_Texts.at(found[1]) + found.suffix().str();
        while (std::regex_search(line, found, std::regex("\\{([^{}\" ]*/[^{}\" ]*)\\}")))
            line = found.prefix().str() + std::to_string(catalogueOf(m_Store).at(found[1])) +
                   found.suffix().str();
        return line;
    }

    void exchange(const std::string& operation, std::string& rest)
    {
        const std::string request = cut(rest, "->");
        const std::string answer = cut(rest, "!!");
        const std::string answered = call(operation, request);
        EXPECT_THAT(answered, Fits(answer));
        if (rest.empty()) {
            EXPECT_EQ(m_Errors, "");
            return;
        }
        EXPECT_THAT(m_Errors, AnyOf("lumo-centre: " + rest + "\n",
                                    AllOf(HasSubstr("lumo-centre: " + operation + ": "), HasSubstr(rest))));
        EXPECT_LT(m_Errors.size(), 1000u);
        if (answered.find("failed: ") == 0 || answered.find("error_text: ") != std::string::npos)
            EXPECT_THAT(answered, HasSubstr(rest));
    }

    std::string call(const std::string& operation, const std::string& request)
    {
        if (!m_Centre)
            serveAs({});
        return ask(operation, request);
    }

    /// With faults, which have a "=", and folders to copy from and to.
    void serveAs(const Words& words)
    {
        centre::ServeOptions options;
        for (const std::string& word : words)
            if (word.find('=') != std::string::npos)
                options.faults.push_back(word);
            else
                options.copyRoots.push_back(m_Data.below(word));
        serve(options);
        m_Texts["root"] = options.copyRoots.empty() ? "" : m_Centre->copyRoots().front();
    }

    /// A line that can't be loaded takes those before and after it along.
    void refuse(std::string rest)
    {
        const std::string line = cut(rest, "!!");
        const std::string good = m_Texts.at("good");
        expectError(centre::ExitCode::Failed, rest, [&] {
            try {
                load(good + "\n\n" + line + "\n" + good);
            } catch (const centre::Error& error) {
                EXPECT_THAT(error.what(), testing::StartsWith("file:3: "));
                throw;
            }
        });
    }

    void add(const Words& words)
    {
        const auto word = [&words](std::size_t i) { return i < words.size() ? words[i] : ""; };
        if (word(0) == "company")
            m_Store.addCompany(word(1));
        else if (word(0) == "user")
            m_Tokens[word(1)] = m_Store.addUser(word(1), word(2), word(3) != "read-only");
        else if (word(0) == "box")
            m_Store.addBox(word(1), word(2));
        else if (word(0) == "disk")
            m_Store.addDisk(word(1), word(2), word(3), word(4));
        else if (word(0) == "files")
            m_Store.addMadeUpFiles(std::stoul(word(1)), std::stoul(word(2)));
        else if (word(0) == "version")
            addVersion(m_Store,
                       {word(1) == "module" ? centre::VersionKind::Module : centre::VersionKind::Program,
                        word(2), word(3), m_Data.below(word(4)), word(5), word(6), word(7), word(8)});
        else
            ADD_FAILURE() << "nothing to add";
    }

    /// search CONDITION -> IMAGES | POINTS | TYPES
    void search(std::string rest)
    {
        const std::regex bounds("bounds (\\S+) (\\S+) (\\S+) (\\S+)");
        const std::string condition = std::regex_replace(
            cut(rest, "->"), bounds, "use_bounds: true bound_a: $1 bound_b: $2 bound_c: $3 bound_d: $4");
        EXPECT_EQ(idsIn(call("searchDataByTypeSat", "type_id: 1 " + condition)), cut(rest, "|"));
        EXPECT_EQ(idsIn(call("searchDataByTypeControlInfo", "type_id: 4 " + condition)), cut(rest, "|"));
        EXPECT_EQ(idsIn(call("searchDataType", "company_id: 1 " + condition)), rest);
    }

    static Words wordsOf(const std::string& text)
    {
        std::istringstream stream(text);
        return {std::istream_iterator<std::string>(stream), {}};
    }

    std::map<std::string, std::string> m_Texts{{"data", fs::canonical(m_Data.below("")).string()}};
    std::map<std::string, std::string> m_Tokens{{"demo", m_Data.token()}};
    using NamedSetUp = std::function<void(const std::string&, const std::string&)>;
    /// Statements of a name and the rest of the line.
    const std::map<std::string, NamedSetUp> m_NamedSetUps = {
        {"let", [this](auto& name, auto& rest) { m_Texts[name] = rest; }},
        {"file",
         [this](auto& name, auto& rest) {
             m_Data.makeFile(name, google::protobuf::UnescapeCEscapeString(rest));
         }},
        {"size", [this](auto& name, auto& rest) { fs::resize_file(m_Data.below(name), std::stoull(rest)); }},
        {"sample",
         [this](auto& name, auto& rest) {
             fs::create_directories(fs::path(m_Data.below(rest)).parent_path());
             fs::copy(LUMO_SAMPLES "/" + name, m_Data.below(rest), fs::copy_options::recursive);
         }},
        {"link",
         [this](auto& name, auto& rest) {
             fs::remove(m_Data.below(name));
             fs::create_symlink(rest, m_Data.below(name));
         }},
        {"content",
         [this](auto& name, auto& rest) {
             EXPECT_EQ(fs::exists(m_Data.below(name)) ? readFile(m_Data.below(name)) : "none", rest);
         }},
        {"same",
         [this](auto& name, auto& rest) {
             EXPECT_EQ(summaryOf(m_Data.below(name)), summaryOf(m_Data.below(rest)));
         }},
        {"restart",
         [this](auto& table, auto& id) {
             if (postgresql() != nullptr)
                 value("SELECT setval('" + table + "_" + id + "_seq', coalesce(max(" + id + "), 1), max(" +
                       id + ") IS NOT NULL) FROM " + table);
         }},
        {"import", [this](auto& folder, auto& company) { import(folder, folder, company); }},
    };
    const std::map<std::string, std::function<void(const std::string&)>> m_SetUps = {
        {"add", [this](auto& rest) { add(wordsOf(rest)); }},
        {"sql", [this](auto& rest) { m_Store.database().execute(rest); }},
        {"load", [this](auto& rest) { load(rest); }},
        {"refuse", [this](auto& rest) { refuse(rest); }},
        {"search", [this](auto& rest) { search(rest); }},
        {"value",
         [this](std::string rest) {
             const std::string sql = cut(rest, "->");
             EXPECT_EQ(value(sql), rest);
         }},
        {"serve", [this](auto& rest) { serveAs(wordsOf(rest)); }},
        {"as", [this](auto& rest) { callWith(m_Tokens.at(rest)); }},
    };
};

TEST_P(Exchanges, AreAnsweredAsWritten)
{
    for (const Statement& statement : statementsOf(LUMO_EXCHANGES "/" + GetParam() + ".txt", " ")) {
        SCOPED_TRACE(statement.place);
        std::string line;
        for (const std::string& part : statement.lines)
            line += part;
        play(line);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, Exchanges, testing::ValuesIn(scriptsIn(LUMO_EXCHANGES)),
                         [](const auto& one) { return one.param; });

} // namespace
