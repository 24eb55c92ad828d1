#include "tests/support/LogCapture.h"
#include "tests/support/TestManager.h"

#include <functional>

namespace {

typedef std::vector<std::string> Lines;

std::string scene(const std::function<bool(QString&, QStringList&, QStringList&)>& get)
{
    QString name = "kept";
    QStringList mainFiles{"m"}, metaFiles{"n"};
    const bool read = get(name, mainFiles, metaFiles);
    return std::to_string(read) + ":" + name.toStdString() + ":" + mainFiles.join(",").toStdString() + ":" +
           metaFiles.join(",").toStdString();
}

const char kScene[] = "sat_name: '北' main_file: 'a' main_file: 'b' meta_file: 'c' sat_result: true";

const struct
{
    const char* name;
    const char* operation;
    const char* answer;
    const char* success;
    const char* bare; ///< outcome of an answer that says true and nothing else
    const char* failure;
    std::function<std::string(TestManager&)> invoke;
} kMethods[] = {
    {"getSpot5FromMetadataDim", "Spot5FromDim", kScene, "北", "", "",
     [](TestManager& m) { return m.getSpot5FromMetadataDim(4294967294u).toStdString(); }},
    {"getSpot6FromDim", "Spot6FromDim", kScene, "1:北:m,a,b:n,c", "1::m:n", "0:kept:m:n",
     [](TestManager& m) {
         return scene([&](QString& name, QStringList& a, QStringList& b) {
             return m.getSpot6FromDim(4294967294u, name, a, b);
         });
     }},
    {"getAlosFromSummary", "AlosFromSummary", kScene, "1:北:m,a,b:n,c", "1::m:n", "0:kept:m:n",
     [](TestManager& m) {
         return scene([&](QString& name, QStringList& a, QStringList& b) {
             return m.getAlosFromSummary(4294967294u, name, a, b);
         });
     }},
    {"getAdsFromSup", "AdsFromSup",
     "ads_text1: '北' ads_text2: '2' ads_text3: '3' ads_text4: '4' ads_text5: '5' ads_text6: '6' ads_result: "
     "true",
     "1:北23456", "1:", "0:kkkkkk",
     [](TestManager& m) {
         QString t[6] = {"k", "k", "k", "k", "k", "k"};
         const bool read = m.getAdsFromSup(4294967294u, t[0], t[1], t[2], t[3], t[4], t[5]);
         return std::to_string(read) + ":" + (t[0] + t[1] + t[2] + t[3] + t[4] + t[5]).toStdString();
     }},
};

} // namespace

TEST(SceneMetadata, IsTakenOnSuccessOnly)
{
    LogCapture log;
    FakeChannel channel;
    TestManager manager(channel);
    for (const auto& method : kMethods) {
        const std::string operation = method.operation;
        const std::string verdict = operation == "AdsFromSup" ? "ads_result" : "sat_result";
        const auto check = [&](const std::string& answer, const std::string& outcome, const Lines& between) {
            SCOPED_TRACE(method.name + (" on " + answer));
            channel.forgetCalls();
            log.clear();
            answer[0] == '!' ? channel.fail(answer.substr(1)) : channel.answer(answer);
            EXPECT_EQ(method.invoke(manager), outcome);
            EXPECT_EQ(channel.calls(), Lines{operation + " {image_id: 4294967294}"});
            EXPECT_EQ(channel.timeouts().back(), 4321);
            Lines lines{managerLine("Enter Function : " + std::string(method.name), method.name)};
            for (const std::string& line : between)
                lines.push_back(managerLine(line, method.name));
            lines.push_back(managerLine("Leave Function : " + std::string(method.name), method.name));
            EXPECT_EQ(log.lines(), lines);
        };
        std::string refused = method.answer;
        refused.replace(refused.find("true"), 4, "false");
        check(method.answer, method.success, {});
        check(verdict + ": true", method.bare, {});
        check(refused, method.failure, {operation + " Result Error"});
        check("", method.failure, {operation + " Result Error"});
        check("!gone", method.failure, {operation + " Error : gone"});
    }
}
