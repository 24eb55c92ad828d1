#include "registration/AssignmentText.h"
#include "tests/registration/AssignmentExpression.h"
#include "tests/support/MethodTable.h"

#include <fstream>
#include <random>
#include <regex>

namespace {

class Registration : public MethodTable
{
protected:
    /// Adds texts that are refused unsent, and checks the lines after the one of entering.
    void refuses(const Lines& lines, const std::function<void()>& add)
    {
        m_Log.clear();
        m_Channel.forgetCalls();
        add();
        EXPECT_EQ(m_Channel.calls(), Lines());
        Lines all{managerLine("Enter Function : addImage", "addImage")};
        for (const std::string& line : lines)
            all.push_back(managerLine(line, "populateCheckData"));
        EXPECT_EQ(m_Log.lines(), all);
    }
};

const char kMatchFailed[] = "Match QRegExp(\"(.*)='(.*)'\") Failed : ";

/// The text of a bean in a request; quotes as the text format writes them.
std::string quoted(std::string text)
{
    for (std::size_t i = 0; (i = text.find('\'', i)) != std::string::npos; i += 2)
        text.insert(i, "\\");
    return '"' + text + '"';
}

} // namespace

TEST_F(Registration, OneTextIsSentWholeWithWhatIdentifiesItOrRefused)
{
    static const std::regex form("(-?\\d+) (.*) (->|!!) ?(.*)");
    std::ifstream lines(TEST_FOLDER "/texts.txt");
    int count = 0;
    std::smatch match;
    for (std::string line; std::getline(lines, line);) {
        if (line[0] == '#')
            continue;
        SCOPED_TRACE(line);
        ++count;
        ASSERT_TRUE(std::regex_match(line, match, form));
        const int kind = std::stoi(match[1]);
        const std::string assignments = match[2], result = match[4];
        const QString text = QString::fromStdString(assignments);
        if (match[3] == "->")
            run({method("addImage", Verdict::accepted,
                        "saveSingleDataByType {data_type_id: " + std::to_string(kind) +
                            " checkdatabean { sqldata: " + quoted(assignments) + " " + result + " }}",
                        "id: 4294967290", "4294967290", [&](auto& m) { return m.addImage(kind, text); })});
        else
            refuses(result == "form"
                        ? Lines{kMatchFailed + assignments}
                        : Lines{result == "type" ? "Image Type Error" : "Can't Find Field : " + result,
                                "Leave Function : addImage"},
                    [&] { EXPECT_EQ(m_Manager.addImage(kind, text), 0xFFFFFFFF); });
    }
    EXPECT_EQ(count, 40);
}

TEST_F(Registration, ABatchIsOneCallAndNoneIfAnyTextIsBad)
{
    using Keys = QList<unsigned int>;
    run({method<Keys>(
             "addImage", Verdict::accepted,
             "saveFullDataByType {data_type_id: 5 checkdatabeans { sqldata: \"mainFileID=\\'1\\'\" "
             "mainfileid: \"1\" } checkdatabeans { sqldata: \"mainFileID=\\'2\\'\" mainfileid: \"2\" }}",
             "id_list: 8 id_list: 6", "ok kept 8 6",
             [](auto& m, auto& ids) {
                 return m.addImage(5, {"mainFileID='1'", "mainFileID='2'"}, ids);
             }),
         method<Keys>("addImage", Verdict::accepted, "saveFullDataByType {data_type_id: 5}", "", "ok kept",
                      [](auto& m, auto& ids) { return m.addImage(5, QStringList(), ids); })});
    Keys ids{99};
    refuses({std::string(kMatchFailed) + "bad"}, [&] {
        EXPECT_FALSE(m_Manager.addImage(5, {"mainFileID='1'", "mainFileID='2'", "bad"}, ids));
        EXPECT_EQ(ids, Keys{99});
    });
}

TEST(AssignmentText, AgreesWithTheRegularExpressionThatDefinesIt)
{
    std::mt19937 random(4711); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same texts in every run
    const QString letters = QString::fromUtf8("''''===,a\n北") + QChar(0);
    for (int i = 0; i < 20000; ++i) {
        QString text;
        for (auto length = random() % 12; text.size() < static_cast<int>(length);)
            text += letters[static_cast<int>(random() % static_cast<unsigned>(letters.size()))];
        QMap<QString, QString> expected, values;
        const bool good = readByExpression(text, expected);
        EXPECT_EQ(assignmenttext::parse(text, values), good) << text.toStdString();
        EXPECT_EQ(values, expected) << text.toStdString();
    }
}

TEST_F(Registration, HostileTextsAreSettledAtOnce)
{
    EXPECT_EQ(m_Manager.addImage(5, QString(1 << 20, '\'')), 0xFFFFFFFF);
    EXPECT_EQ(m_Manager.addImage(5, QString("='").repeated(1 << 19)), 0xFFFFFFFF);
    QString keys;
    for (int i = 0; i < 1000; ++i)
        keys += QString("key%1='%1',").arg(i);
    m_Channel.answer("result: 0 id: 1").answer("result: 0 id: 2");
    EXPECT_EQ(m_Manager.addImage(5, keys + "mainFileID='1'"), 1u);
    EXPECT_EQ(m_Manager.addImage(5, QString("mainFileID='1") + QChar(0) + "'"), 2u);
    EXPECT_EQ(m_Channel.calls().back(),
              "saveSingleDataByType {data_type_id: 5 checkdatabean { sqldata: \"mainFileID=\\'1\" "
              "mainfileid: \"1\" }}");
}
