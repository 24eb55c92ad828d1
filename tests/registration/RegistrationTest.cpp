#include "registration/AssignmentText.h"
#include "tests/support/MethodTable.h"

#include <QRegExp>

#include <random>

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

struct Case
{
    int type;
    std::string text;
    std::string bean;    ///< its fields beside sqldata, in the order of their places
    std::string refusal; ///< a key that is missing, "type" or "form"; empty where the text is sent
};

const std::vector<Case>& cases()
{
    static const std::vector<Case> all = {
        {3, "companyID='7',projectName='north'", " proname: \"north\" company_id: 7", ""},
        {3, "projectName='n',x='1',companyID='007'", " proname: \"n\" company_id: 7", ""},
        {3, "companyID='7', projectName='north'", "", "projectName"},
        {3, "companyID='abc',projectName='n'", "", "companyID"},
        {3, "companyID='',projectName='n'", "", "companyID"},
        {3, "companyID='-1',projectName='n'", "", "companyID"},
        {3, "companyid='7',projectName='n'", "", "companyID"},
        {3, "companyID='4294967295',projectName='n'", "", "companyID"},
        {3, "companyID='4294967294',projectName='n'", " proname: \"n\" company_id: 4294967294", ""},
        {3, "companyID='4294967296',projectName='n'", "", "companyID"},
        {3, "companyID='7',projectName=''", "", "projectName"},
        {3, "projectName=''", "", "companyID"},
        {3, "companyID='1',projectName='a',companyID='2'", " proname: \"a\" company_id: 2", ""},
        {4, "projectID='5',dataType='DEM'", " datatype: \"DEM\" project_id: 5", ""},
        {4, "projectID='5'", "", "dataType"},
        {4, "dataType='DEM'", "", "projectID"},
        {5, "mainFileID='A-17'", " mainfileid: \"A-17\"", ""},
        {6, "mainFileID='17',imageName='x'", " mainfileid: \"17\"", ""},
        {7, "mainFileID=' '", " mainfileid: \" \"", ""},
        {8, "mainFileID='1'", " mainfileid: \"1\"", ""},
        {9, "dqConID='3',conNumber='P1'", " connumber: \"P1\" dqcon_id: 3", ""},
        {9, "dqConID='3',conNumber=''", "", "conNumber"},
        {9, "conNumber='P1'", "", "dqConID"},
        {10, "mainFileID='1'", " mainfileid: \"1\"", ""},
        {11, "mainFileID='1'", " mainfileid: \"1\"", ""},
        {12, "mainFileID='1'", " mainfileid: \"1\"", ""},
        {13, "mainFileID='it's'", " mainfileid: \"it\\'s\"", ""},
        {13, "mainFileID=''", "", "mainFileID"},
        {13, "x='1'", "", "mainFileID"},
        {5, "mainFileID='1'rest", " mainfileid: \"1\"", ""},
        {5, "x='mainFileID='1'", "", "mainFileID"},
        {2, "a='b'", "", "type"},
        {14, "a='b'", "", "type"},
        {-1, "a='b'", "", "type"},
        {14, "a=b", "", "form"},
        {5, "", "", "form"},
        {5, "mainFileID='1',", "", "form"},
        {5, "mainFileID='1,2'", "", "form"},
        {5, "mainFileID=1", "", "form"},
        {5, "mainFileID='", "", "form"},
    };
    return all;
}

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
    for (const Case& one : cases()) {
        SCOPED_TRACE(one.text);
        const QString text = QString::fromStdString(one.text);
        if (one.refusal.empty())
            run({method("addImage", Verdict::accepted,
                        "saveSingleDataByType {data_type_id: " + std::to_string(one.type) +
                            " checkdatabean { sqldata: " + quoted(one.text) + one.bean + " }}",
                        "id: 4294967290", "4294967290",
                        [&](auto& m) { return m.addImage(one.type, text); })});
        else
            refuses(one.refusal == "form" ? Lines{kMatchFailed + one.text}
                                          : Lines{one.refusal == "type" ? "Image Type Error"
                                                                        : "Can't Find Field : " + one.refusal,
                                                  "Leave Function : addImage"},
                    [&] { EXPECT_EQ(m_Manager.addImage(one.type, text), 0xFFFFFFFF); });
    }
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
        bool good = true;
        for (const QString& piece : text.split(",", Qt::KeepEmptyParts, Qt::CaseSensitive)) {
            QRegExp expression("(.*)='(.*)'", Qt::CaseInsensitive);
            good = good && piece.indexOf(expression, 0) != -1;
            if (good)
                expected[expression.cap(1)] = expression.cap(2);
        }
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
