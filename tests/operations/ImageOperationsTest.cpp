#include "forgeserver.pb.h"
#include "lumo/components/wirecall/Closures.h"
#include "tests/support/Awaited.h"
#include "tests/support/Channel.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TestManager.h"
#include "tests/support/TestService.h"

#include <QMetaMethod>

#include <cstdlib>
#include <thread>

using namespace forgeserver;

namespace {

typedef std::vector<std::string> Lines;

/// A channel that keeps asynchronous calls until the test ends them.
class WaitingChannel : public wirecall::RpcChannel
{
public:
    void CallMethod(const google::protobuf::MethodDescriptor* method,
                    google::protobuf::RpcController* controller, const google::protobuf::Message* request,
                    google::protobuf::Message* response, google::protobuf::Closure* done) override
    {
        ASSERT_NE(done, nullptr);
        using OfOneImage =
            wirecall::MethodClosure_Bind3<true, CLumoDataMgr*, CLumoDataMgr, wirecall::RpcController*,
                                          const CLumoFilterFile&, AnalyzeImageRsp*>;
        EXPECT_EQ(dynamic_cast<OfOneImage*>(done) != nullptr, method->name() == "AnalyzeImage");
        auto& call = *static_cast<wirecall::RpcController*>(controller);
        EXPECT_EQ(call.timeout(), 0) << "no limit";
        asked = FakeChannel::textOf(*method, *request);
        end = [&call, response, done](const std::string& answer) {
            FakeChannel::play(answer, call, *response);
            done->Run();
        };
    }

    std::string asked;
    std::function<void(const std::string& answer)> end; ///< takes what FakeChannel's `answer` takes
};

CLumoFilterFile filterOf(const QString& name)
{
    CLumoFilterFile filter;
    filter.m_ImgName = name;
    return filter;
}

/// Makes the singleton's calls go over a channel.
CLumoDataMgr& managerOver(wirecall::RpcChannel& forge)
{
    FakeChannel ledger;
    ledger.answer("bean { id: 7 }").answer("bean { id: 8 }");
    CLumoDataMgr& manager = CLumoDataMgr::GetSingleTon();
    EXPECT_EQ(manager.initDataMgr(&ledger, &forge, "t0ken", "user", "company", 4321), INIT_SUCCESS);
    return manager;
}

/// The singleton on a channel of the test's own, with what its signals brought.
class ImageOperations : public ::testing::Test
{
protected:
    ImageOperations()
    {
        const auto note = [this](const QString& text) {
            m_LinesAtSignal = m_Log.rawLines().size();
            m_Signals.push_back(text.toStdString());
        };
        QObject::connect(
            &m_Manager, &CLumoDataMgr::reqAnalyzeImageFinished, &m_Receiver,
            [note](const CLumoFilterFile& filter) { note(filter.m_ImgName); }, Qt::DirectConnection);
        QObject::connect(
            &m_Manager, &CLumoDataMgr::reqAnalyzeImagesFinished, &m_Receiver,
            [note](const QList<CLumoFilterFile>& filters) {
                QStringList names;
                for (const CLumoFilterFile& filter : filters)
                    names << filter.m_ImgName;
                note("[" + names.join(",") + "]");
            },
            Qt::DirectConnection);
        QObject::connect(
            &m_Manager, &CLumoDataMgr::reqFileCopyFinished, &m_Receiver,
            [note](const QString& file) { note("copied " + file); }, Qt::DirectConnection);
    }

    /// Starts a call, ends it with `answer`, and checks the request, the signal and the lines: what comes
    /// between Enter and Leave has the completion's name.
    void check(const std::function<void()>& start, const std::string& asked, const std::string& answer,
               const Lines& signals, const std::string& method, const std::string& completion,
               const Lines& between)
    {
        SCOPED_TRACE(method + " on " + answer);
        m_Log.clear();
        m_Signals.clear();
        start();
        EXPECT_EQ(m_Channel.asked, asked);
        Lines lines{managerLine("Enter Function : " + method, method)};
        EXPECT_EQ(m_Log.lines(), lines) << "the rest comes with the answer";
        m_Channel.end(answer);
        EXPECT_EQ(m_Signals, signals);
        for (const std::string& line : between)
            lines.push_back(managerLine(method + " Error : " + line, completion));
        EXPECT_TRUE(signals.empty() || m_LinesAtSignal == lines.size()) << "it comes before the Leave line";
        lines.push_back(managerLine("Leave Function : " + method, completion));
        EXPECT_EQ(m_Log.lines(), lines);
    }

    LogCapture m_Log;
    WaitingChannel m_Channel;
    CLumoDataMgr& m_Manager = managerOver(m_Channel);
    QObject m_Receiver;
    Lines m_Signals;
    std::size_t m_LinesAtSignal = 0;
};

} // namespace

TEST_F(ImageOperations, TheSignalsAreTheFirstMembersOfTheMetaObject)
{
    const QMetaObject& meta = CLumoDataMgr::staticMetaObject;
    Lines members;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        EXPECT_EQ(meta.method(i).methodType(), QMetaMethod::Signal);
        members.push_back(
            (meta.method(i).methodSignature() + " " + meta.method(i).parameterNames().join()).toStdString());
    }
    EXPECT_EQ(members, (Lines{"reqAnalyzeImageFinished(CLumoFilterFile) filter",
                              "reqAnalyzeImagesFinished(QList<CLumoFilterFile>) listFilter",
                              "reqFileCopyFinished(QString) strFile"}));
}

TEST_F(ImageOperations, EachOutcomeOfOneAnswerIsToldInItsWay)
{
    const auto run = [this](const std::function<void()>& start, const std::string& asked,
                            const std::string& verdict, const std::string& signal, const std::string& method,
                            const std::string& completion) {
        const auto outcome = [&](const std::string& answer, const Lines& signals, const Lines& between) {
            check(start, asked, answer, signals, method, completion, between);
        };
        outcome("!unsent", {}, {"cntl->IsRequestSent return false!"});
        outcome("!gone", {}, {"cntl->Failed return true!"});
        outcome(verdict + ": true error_text: 'x'", {signal}, {});
        outcome(verdict + ": false error_text: '北'", {}, {"\xb1\xb1"});
        outcome(verdict + ": false error_text: ''", {}, {""});
        outcome("", {}, {"No Error String"});
    };
    run([this] { m_Manager.analyzeImage(filterOf("one"), true); },
        "AnalyzeImage {analyze_flag: true filter_kind: 0 img_name: \"one\" sensor: \"\" base_id: 0}",
        "analyze_result", "one", "analyzeImage", "analyzeImageFinished");
    run([this] { m_Manager.fileCopy(QString("/a"), 1, 4294967294u, "b/c", true); },
        "FileCopyToDb {src_file: \"/a\" target_a: 1 target_b: 4294967294 relative_path: \"b/c\" copy_flag: "
        "true}",
        "copy_result", "copied /a", "fileCopy", "fileCopyToDbFinished");
    run([this] { m_Manager.fileCopy(QString("/a"), 0, 2, "", false); },
        "FileCopyToDb {src_file: \"/a\" target_a: 0 target_b: 2 copy_flag: false}", "copy_result",
        "copied /a", "fileCopy", "fileCopyToDbFinished");
    run([this] { m_Manager.fileCopy(3, QString::fromUtf8("/北"), false); },
        "FileCopyFromDb {source_id: 3 dist_path: \"/北\" copy_flag: false}", "copy_result", "copied /北",
        "fileCopy", "fileCopyFromDbFinished");
}

TEST_F(ImageOperations, AListTellsThoseThatPassed)
{
    const QList<CLumoFilterFile> three{filterOf("a"), filterOf("b"), filterOf("c")};
    const auto asked = [](const std::string& name) {
        return "analyze_req { analyze_flag: false filter_kind: 0 img_name: \"" + name +
               "\" sensor: \"\" base_id: 0 }";
    };
    const std::string all = "AnalyzeImages {" + asked("a") + " " + asked("b") + " " + asked("c") + "}";
    const std::string good = "analyze_rsp { analyze_result: true } ";
    const struct
    {
        std::string answer;
        Lines signals;
        Lines between;
    } kCases[] = {
        {"!unsent", {}, {"cntl->IsRequestSent return false!"}},
        {"!gone", {}, {"cntl->Failed return true!"}},
        {good + "analyze_rsp { error_text: 'bad' } " + good, {"[a,c]"}, {"bad"}},
        {"analyze_rsp {}", {"[]"}, {""}},
        {good + good + good + good, {"[a,b,c]"}, {}},
        {"", {"[]"}, {}},
    };
    for (const auto& one : kCases)
        check([&] { m_Manager.analyzeImages(three, false); }, all, one.answer, one.signals, "analyzeImages",
              "analyzeImagesFinished", one.between);
    check([&] { m_Manager.analyzeImages({}, false); }, "AnalyzeImages {}", "", {"[]"}, "analyzeImages",
          "analyzeImagesFinished", {});
}

TEST_F(ImageOperations, AFilterFileIsSentWholeButForTheTextOfItsBase)
{
    CLumoFilterFile filter = filterOf(QString::fromUtf8("北"));
    filter.m_Sensor = "PAN";
    filter.m_FilterKind = -1;
    filter.m_Base = {"not sent", 4};
    filter.m_MainFiles = {{"m1", 1}, {"m2", -2}};
    filter.m_MetaFiles = {{"n", 3}};
    filter.m_AttachFiles = {{"", 5}};
    filter.m_Marks = {{"k", 6}};
    check([&] { m_Manager.analyzeImage(filter, false); },
          "AnalyzeImage {analyze_flag: false filter_kind: -1 img_name: \"北\" sensor: \"PAN\""
          " base_id: 4 main_file { ref_id: 1 text: \"m1\" } main_file { ref_id: -2 text: \"m2\" }"
          " meta_file { ref_id: 3 text: \"n\" } attach_file { ref_id: 5 text: \"\" } mark { ref_id: 6 text: "
          "\"k\" }}",
          "analyze_result: true", {"北"}, "analyzeImage", "analyzeImageFinished", {});
}

TEST_F(ImageOperations, TheTextOfACopyMayDieBeforeTheAnswer)
{
    m_Signals.clear();
    {
        const QString text = QString("/short") + "-lived";
        m_Manager.fileCopy(7, text, true);
    }
    m_Channel.end("copy_result: true");
    EXPECT_EQ(m_Signals, Lines{"copied /short-lived"});
}

namespace {

constexpr long kCalls = 300;

/// A server whose analyses wait until they are answered, with the singleton over it; the name "bad" fails.
class HeldAnalyses : public ForgeServices
{
public:
    HeldAnalyses() { managerOver(*m_Channel); }

    void AnalyzeImage(google::protobuf::RpcController*, const AnalyzeImageReq* request,
                      AnalyzeImageRsp* response, google::protobuf::Closure* done) override
    {
        response->set_analyze_result(request->img_name() != "bad");
        m_Held.change([&](auto& held) { held.push_back(done); });
    }

    /// Starts analyses of images of these names and waits until the server has them.
    void start(const std::function<QString(int)>& name)
    {
        for (int i = 0; i < kCalls; ++i)
            CLumoDataMgr::GetSingleTon().analyzeImage(filterOf(name(i)), true);
        m_Held.wait([](const auto& held) { return held.size() == std::size_t{kCalls}; });
    }

    void answerAll()
    {
        for (google::protobuf::Closure* done : m_Held.exchange({}))
            done->Run();
    }

    /// Cancels the calls, then waits for the held closures.
    void stop() { m_Server.stop(0); }

private:
    Awaited<std::vector<google::protobuf::Closure*>> m_Held;
    TestServer m_Server{*this};
    const boost::shared_ptr<wirecall::RpcChannel> m_Channel = channelTo(m_Server.address());
};

/// A channel that throws: at once, or after it ran the closure.
class ThrowingChannel : public wirecall::RpcChannel
{
public:
    void CallMethod(const google::protobuf::MethodDescriptor*, google::protobuf::RpcController* controller,
                    const google::protobuf::Message*, google::protobuf::Message*,
                    google::protobuf::Closure* done) override
    {
        if (answers) {
            static_cast<wirecall::RpcController*>(controller)->setOutcome(wirecall::Failure::None, {}, true);
            done->Run();
        }
        throw std::logic_error("no channel");
    }

    bool answers = false;
};

/// Ends the process with 0 when the manager is freed, else with 1.
[[noreturn]] void endWithNothingOutstanding()
{
    static ThrowingChannel& channel = *new ThrowingChannel;
    CLumoDataMgr& manager = managerOver(channel);
    QObject::connect(&manager, &QObject::destroyed, [] { std::_Exit(0); });
    EXPECT_THROW(manager.analyzeImage(filterOf("x"), true), std::logic_error);
    channel.answers = true;
    EXPECT_THROW(manager.fileCopy(1, "x", true), std::logic_error);
    struct Completing : CLumoDataMgr
    {
        using CLumoDataMgr::analyzeImageFinished;
    };
    Completing().analyzeImageFinished(new wirecall::RpcController, filterOf("x"), new AnalyzeImageRsp);
    std::exit(1);
}

[[noreturn]] void endWhileAnswersCome()
{
    static HeldAnalyses& held = *new HeldAnalyses;
    QObject::connect(&CLumoDataMgr::GetSingleTon(), &CLumoDataMgr::reqAnalyzeImageFinished,
                     [](const CLumoFilterFile&) {});
    held.start([](int) { return "x"; });
    std::thread([] { held.answerAll(); }).detach();
    std::exit(0);
}

} // namespace

TEST(OutstandingAnalysesDeathTest, AChannelThatThrowsAndACompletionCalledDirectlyLeaveTheManagerToBeFreed)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(endWithNothingOutstanding(), testing::ExitedWithCode(0), "");
}

TEST(OutstandingAnalysesDeathTest, AProcessMayEndWhileAnswersCome)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(endWhileAnswersCome(), testing::ExitedWithCode(0), "");
}

TEST(OutstandingAnalyses, EachIsAnsweredOnceAndADyingCentreEndsTheRest)
{
    HeldAnalyses held;
    Awaited<QStringList> passed;
    QObject receiver;
    QObject::connect(
        &CLumoDataMgr::GetSingleTon(), &CLumoDataMgr::reqAnalyzeImageFinished, &receiver,
        [&](const CLumoFilterFile& filter) {
            passed.change([&](auto& names) { names << filter.m_ImgName; });
        },
        Qt::DirectConnection);
    LogCapture log;
    held.start([](int i) { return i % 10 == 0 ? QString("bad") : QString::number(i); });
    held.answerAll();
    log.waitFor("Leave Function : analyzeImage", kCalls);
    QStringList names = passed.value();
    EXPECT_EQ(names.size(), kCalls - kCalls / 10);
    EXPECT_EQ(names.removeDuplicates(), 0);

    held.start([](int) { return "never"; });
    std::thread dying([&] { held.stop(); });
    log.waitFor("Leave Function : analyzeImage", 2 * kCalls);
    log.waitFor("cntl->Failed return true!", kCalls);
    held.answerAll();
    dying.join();
    EXPECT_EQ(passed.value().size(), names.size());
}
