#include "forgeserver.pb.h"
#include "lumo/components/wirecall/RpcServer.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TestManager.h"

#include <QCoreApplication>
#include <QMetaMethod>

#include <condition_variable>
#include <cstdlib>
#include <mutex>
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
        auto& call = *static_cast<wirecall::RpcController*>(controller);
        EXPECT_EQ(call.timeout(), 0) << "no limit";
        asked = method->name() + " {" + request->ShortDebugString() + "}";
        end = [&call, response, done](const std::string& answer) {
            if (answer[0] == '!')
                call.setOutcome(wirecall::Failure::Other, answer.substr(1), answer != "!unsent");
            else
                call.setOutcome(wirecall::Failure::None, {}, true);
            EXPECT_TRUE(answer[0] == '!' || google::protobuf::TextFormat::ParseFromString(answer, response));
            done->Run();
        };
    }

    std::string asked;
    std::function<void(const std::string& answer)> end; ///< with a leading '!' a failure
};

CLumoFilterFile filterOf(const QString& name)
{
    CLumoFilterFile filter;
    filter.m_ImgName = name;
    return filter;
}

std::string namesOf(const QList<CLumoFilterFile>& filters)
{
    QStringList names;
    for (const CLumoFilterFile& filter : filters)
        names << filter.m_ImgName;
    return names.join(",").toStdString();
}

/// The singleton on channels of the test's own, with what its signals brought.
class ImageOperations : public ::testing::Test
{
protected:
    ImageOperations()
    {
        connectTo(m_Channel);
        const auto told = [this](const std::string& text) {
            m_Log.lines().empty() ? void() : m_LinesAtSignal.push_back(m_Log.rawLines().size());
            m_Signals.push_back(text);
        };
        QObject::connect(
            &m_Manager, &CLumoDataMgr::reqAnalyzeImageFinished, &m_Receiver,
            [told](const CLumoFilterFile& filter) { told(filter.m_ImgName.toStdString()); },
            Qt::DirectConnection);
        QObject::connect(
            &m_Manager, &CLumoDataMgr::reqAnalyzeImagesFinished, &m_Receiver,
            [told](const QList<CLumoFilterFile>& filters) { told("[" + namesOf(filters) + "]"); },
            Qt::DirectConnection);
        QObject::connect(
            &m_Manager, &CLumoDataMgr::reqFileCopyFinished, &m_Receiver,
            [told](const QString& file) { told("copied " + file.toStdString()); }, Qt::DirectConnection);
    }

    void connectTo(wirecall::RpcChannel& forge)
    {
        m_Ledger.answer("result: 0 bean { id: 7 }").answer("result: 0 bean { id: 8 }");
        EXPECT_EQ(m_Manager.initDataMgr(&m_Ledger, &forge, "t0ken", "user", "company", 4321), INIT_SUCCESS);
        m_Log.clear();
    }

    /// Starts a call, ends it with `answer`, and checks the request, the signal and the lines: what comes
    /// between Enter and Leave bears the completion's name.
    void check(const std::function<void()>& start, const std::string& asked, const std::string& answer,
               const Lines& signals, const std::string& method, const std::string& completion,
               const Lines& between)
    {
        SCOPED_TRACE(method + " on " + answer);
        m_Log.clear();
        m_Signals.clear();
        m_LinesAtSignal.clear();
        start();
        EXPECT_EQ(m_Channel.asked, asked);
        Lines lines{managerLine("Enter Function : " + method, method)};
        EXPECT_EQ(m_Log.lines(), lines) << "the rest comes with the answer";
        m_Channel.end(answer);
        EXPECT_EQ(m_Signals, signals);
        for (const std::string& line : between)
            lines.push_back(managerLine(method + " Error : " + line, completion));
        for (const std::size_t written : m_LinesAtSignal)
            EXPECT_EQ(written, lines.size()) << "a signal comes before the Leave line";
        lines.push_back(managerLine("Leave Function : " + method, completion));
        EXPECT_EQ(m_Log.lines(), lines);
    }

    LogCapture m_Log;
    FakeChannel m_Ledger;
    WaitingChannel m_Channel;
    CLumoDataMgr& m_Manager = CLumoDataMgr::GetSingleTon();
    QObject m_Receiver;
    Lines m_Signals;
    std::vector<std::size_t> m_LinesAtSignal;
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
        "FileCopyFromDb {source_id: 3 dist_path: \"/\\345\\214\\227\" copy_flag: false}", "copy_result",
        "copied /北", "fileCopy", "fileCopyFromDbFinished");
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
          "AnalyzeImage {analyze_flag: false filter_kind: -1 img_name: \"\\345\\214\\227\" sensor: \"PAN\""
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

/// Answers an analysis when it is told to; the name "bad" fails.
class HoldingService : public ForgeServices
{
public:
    void AnalyzeImage(google::protobuf::RpcController*, const AnalyzeImageReq* request,
                      AnalyzeImageRsp* response, google::protobuf::Closure* done) override
    {
        response->set_analyze_result(request->img_name() != "bad");
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Held.push_back(done);
        m_Changed.notify_all();
    }

    void waitFor(std::size_t calls)
    {
        std::unique_lock<std::mutex> lock(m_Mutex);
        m_Changed.wait(lock, [&] { return m_Held.size() >= calls; });
    }

    void answerAll()
    {
        std::vector<google::protobuf::Closure*> held;
        {
            const std::lock_guard<std::mutex> lock(m_Mutex);
            held.swap(m_Held);
        }
        for (google::protobuf::Closure* done : held)
            done->Run();
    }

private:
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::vector<google::protobuf::Closure*> m_Held;
};

/// Counts the Leave lines of analyses, each the end of one.
class EndCounter
{
public:
    EndCounter()
    {
        CLumoLogger::GetSinglePton()->toCallback([this](const char* text, int length) {
            const std::string line(text, static_cast<std::size_t>(length));
            const std::lock_guard<std::mutex> lock(m_Mutex);
            m_Failed += line.find("Failed return true!") != std::string::npos;
            m_Ended += line.find("Leave Function : analyzeImage") != std::string::npos;
            m_Changed.notify_all();
        });
    }
    ~EndCounter() { CLumoLogger::GetSinglePton()->toCallback(CLumoLogger::Callback()); }

    void waitFor(int calls)
    {
        std::unique_lock<std::mutex> lock(m_Mutex);
        m_Changed.wait(lock, [&] { return m_Ended >= calls; });
    }
    int failed()
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return m_Failed;
    }

private:
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    int m_Ended = 0;
    int m_Failed = 0;
};

constexpr int kCalls = 1000;

/// A server of held analyses, with the singleton connected to it.
struct HeldAnalyses
{
    HeldAnalyses()
    {
        server.add(&service);
        std::string error;
        wirecall::RpcServer::Options options;
        options.address = "127.0.0.1:0";
        EXPECT_TRUE(server.start(options, error)) << error;
        wirecall::ChannelOptions client;
        client.address = "127.0.0.1:" + std::to_string(server.port());
        channel = wirecall::openChannel(client, error);
        EXPECT_TRUE(channel) << error;
        ledger.answer("result: 0 bean { id: 7 }").answer("result: 0 bean { id: 8 }");
        EXPECT_EQ(manager.initDataMgr(&ledger, channel.get(), "t", "user", "company", 1000), INIT_SUCCESS);
    }

    HoldingService service;
    wirecall::RpcServer server;
    boost::shared_ptr<wirecall::RpcChannel> channel;
    FakeChannel ledger;
    CLumoDataMgr& manager = CLumoDataMgr::GetSingleTon();
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
    static FakeChannel& ledger = *new FakeChannel;
    ledger.answer("bean { id: 7 }").answer("bean { id: 8 }");
    CLumoDataMgr& manager = CLumoDataMgr::GetSingleTon();
    EXPECT_EQ(manager.initDataMgr(&ledger, &channel, "t", "user", "company", 1000), INIT_SUCCESS);
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
    QObject::connect(&held.manager, &CLumoDataMgr::reqAnalyzeImageFinished, [](const CLumoFilterFile&) {});
    for (int i = 0; i < kCalls; ++i)
        held.manager.analyzeImage(filterOf("x"), true);
    held.service.waitFor(kCalls);
    std::thread([] { held.service.answerAll(); }).detach();
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

TEST(OutstandingAnalyses, AThousandAreAnsweredEachOnceAndADyingCentreEndsTheRest)
{
    HeldAnalyses held;
    CLumoDataMgr& manager = held.manager;
    std::mutex mutex;
    QStringList told;
    QObject receiver;
    QObject::connect(
        &manager, &CLumoDataMgr::reqAnalyzeImageFinished, &receiver,
        [&](const CLumoFilterFile& filter) {
            const std::lock_guard<std::mutex> lock(mutex);
            told << filter.m_ImgName;
        },
        Qt::DirectConnection);
    EndCounter ends;
    for (int i = 0; i < kCalls; ++i)
        manager.analyzeImage(filterOf(i % 10 == 0 ? QString("bad") : QString::number(i)), true);
    held.service.waitFor(kCalls);
    held.service.answerAll();
    ends.waitFor(kCalls);
    {
        const std::lock_guard<std::mutex> lock(mutex);
        EXPECT_EQ(told.size(), kCalls - kCalls / 10);
        EXPECT_EQ(told.removeDuplicates(), 0);
    }

    for (int i = 0; i < kCalls; ++i)
        manager.analyzeImage(filterOf("never"), true);
    held.service.waitFor(kCalls);
    std::thread dying(
        [&] { held.server.stop(0); }); // waits for the held closures, cancels their calls before
    ends.waitFor(2 * kCalls);
    EXPECT_EQ(ends.failed(), kCalls);
    held.service.answerAll();
    dying.join();
}
