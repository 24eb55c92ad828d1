// Plays the files of the folder transcripts/, whose form is explained in its file FORM.

#include "tests/cli/CentreProcess.h"
#include "tests/support/Script.h"

#include <iterator>
#include <sstream>

namespace {

bool startsWith(const std::string& text, const std::string& head)
{
    return text.compare(0, head.size(), head) == 0;
}

class Transcripts : public testing::TestWithParam<std::string>
{
protected:
    void play(const std::vector<std::string>& statement)
    {
        std::istringstream words(statement[0]);
        std::string verb;
        words >> verb;
        std::vector<std::string> rest(std::istream_iterator<std::string>(words), {});
        for (std::string& word : rest)
            if (startsWith(word, "$PWD"))
                word.replace(0, 4, m_Centre.folder().string());
        if (verb == "$")
            playCommand(statement);
        else if (verb == "fails")
            playFailure(statement[0]);
        else if (verb == "serve")
            m_Centre.serve(rest);
        else if (verb == "stop")
            EXPECT_EQ(m_Centre.stop(), 0);
        else if (verb == "kill")
            m_Centre.kill();
        else
            ADD_FAILURE() << "no statement";
    }

private:
    void playCommand(const std::vector<std::string>& statement)
    {
        std::string command = statement[0].substr(2);
        std::string output;
        std::string errors;
        int exitCode = 0;
        for (std::size_t i = 1; i < statement.size(); ++i)
            if (statement[i][0] == '>')
                command += "\n" + statement[i].substr(2);
            else if (statement[i][0] == '?')
                exitCode = std::stoi(statement[i].substr(2));
            else if (statement[i][0] == '!')
                errors += lineOf(statement[i].substr(2));
            else
                output += lineOf(statement[i].substr(1));
        const Outcome outcome = m_Centre.shell(command);
        EXPECT_EQ(outcome.exitCode, exitCode);
        EXPECT_THAT(outcome.output, Fits(output));
        EXPECT_THAT(outcome.errors, Fits(errors));
    }

    /// A line that is for any text is for any number of lines.
    static std::string lineOf(const std::string& expected)
    {
        return expected == "..." ? expected : expected + "\n";
    }

    /// fails CODE COMMAND !! MESSAGE
    void playFailure(const std::string& statement)
    {
        const std::size_t command = statement.find(' ', 6) + 1;
        const std::size_t end = statement.find(" !! ");
        const Outcome outcome = m_Centre.shell(statement.substr(command, end - command));
        EXPECT_EQ(outcome.exitCode, std::stoi(statement.substr(6)));
        EXPECT_EQ(outcome.output, "");
        EXPECT_TRUE(startsWith(outcome.errors, "lumo: ") || startsWith(outcome.errors, "lumo-centre: "));
        EXPECT_THAT(outcome.errors, testing::HasSubstr(statement.substr(end + 4)));
        EXPECT_EQ(outcome.errors.find('\n'), outcome.errors.size() - 1) << outcome.errors;
    }

    CentreProcess m_Centre;
};

TEST_P(Transcripts, ComeOutAsWritten)
{
    for (const Statement& statement : statementsOf(LUMO_TRANSCRIPTS "/" + GetParam() + ".txt", " !?>")) {
        SCOPED_TRACE(statement.place);
        play(statement.lines);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, Transcripts, testing::ValuesIn(scriptsIn(LUMO_TRANSCRIPTS)),
                         [](const auto& one) { return one.param; });

} // namespace
