// Registrations in batches and analyses outstanding at once, beside a bare gRPC generated stub that asks the
// same centre for the same.

#include "bench/Rows.h"
#include "bench/Turns.h"
#include "bench/World.h"
#include "centre/content/Import.h"
#include "centre/content/LoadRecords.h"
#include "forgeserver.grpc.pb.h"

#include <benchmark/benchmark.h>
#include <grpcpp/completion_queue.h>

#include <QFile>
#include <QTemporaryDir>

#include <condition_variable>
#include <deque>
#include <iostream>
#include <mutex>
#include <optional>
#include <sstream>

namespace {

constexpr int kRegistrations = 10000;
constexpr int kBatch = 500;
constexpr int kAnalyses = 1000;

/// One image, file 1, and a type to register images of.
void fill(centre::Store& store, const QTemporaryDir& images)
{
    if (!QFile::copy(LUMO_SAMPLES "/imagery/whole-earth.jpg", images.filePath("earth.jpg")))
        throw std::runtime_error("the sample image can't be copied");
    centre::importTree(
        store, {images.path().toStdString(), "disk", "LUMO", {}, false, [](const std::string& problem) {
                    throw std::runtime_error(problem);
                }});
    std::stringstream lines(R"({"kind":"project","projectID":1,"projectName":"north"}
{"kind":"type","typeID":1,"projectID":1,"dataType":"卫星影像"})");
    centre::loadRecords(store, lines, "made up", [](std::uint64_t) {});
}

QStringList batch()
{
    QStringList texts;
    for (int i = 0; i < kBatch; ++i)
        texts << QString("mainFileID='1',typeID='1',imageName='image %1',text1='PAN',value1='2.5'").arg(i);
    return texts;
}

bool registerOurs()
{
    const QStringList texts = batch();
    for (int i = 0; i < kRegistrations / kBatch; ++i) {
        QList<unsigned int> ids;
        if (!World::manager().addImage(DATA_TYPE_SAT_IMAGE, texts, ids) || ids.size() != kBatch)
            return false;
    }
    return true;
}

bool registerBare(const World& world)
{
    ledgerserver::DataUtilBeanReq request;
    request.set_data_type_id(DATA_TYPE_SAT_IMAGE);
    for (const QString& text : batch()) {
        ledgerserver::CheckDataBean& bean = *request.add_checkdatabeans();
        bean.set_sqldata(text.toStdString());
        bean.set_mainfileid("1");
    }
    for (int i = 0; i < kRegistrations / kBatch; ++i) {
        ledgerserver::DataUtilBeanRsp response;
        if (!world.bare(&World::BareStub::saveFullDataByType, request, response) ||
            response.id_list_size() != kBatch)
            return false;
    }
    return true;
}

CLumoFilterFile filter()
{
    CLumoFilterFile file;
    file.m_ImgName = "image";
    file.m_MainFiles = {{"earth.jpg", 1}};
    return file;
}

/// Counts the signals of analyses.
class Analyses
{
public:
    Analyses()
    {
        QObject::connect(
            &World::manager(), &CLumoDataMgr::reqAnalyzeImageFinished, &m_Receiver,
            [this](const CLumoFilterFile&) {
                const std::lock_guard<std::mutex> lock(m_Mutex);
                ++m_Passed;
                m_Changed.notify_one();
            },
            Qt::DirectConnection);
    }

    bool runOurs()
    {
        m_Passed = 0;
        for (int i = 0; i < kAnalyses; ++i)
            World::manager().analyzeImage(filter(), false);
        std::unique_lock<std::mutex> lock(m_Mutex);
        return m_Changed.wait_for(lock, std::chrono::seconds(30), [this] { return m_Passed == kAnalyses; });
    }

    static bool runBare(const World& world)
    {
        struct Call
        {
            grpc::ClientContext context;
            forgeserver::AnalyzeImageRsp response;
            grpc::Status status;
            std::unique_ptr<grpc::ClientAsyncResponseReader<forgeserver::AnalyzeImageRsp>> reader;
        };
        const auto stub = forgeserver::bare::ForgeServices::NewStub(world.bareChannel());
        forgeserver::AnalyzeImageReq request;
        request.set_analyze_flag(false);
        request.set_img_name("image");
        forgeserver::Reference& file = *request.add_main_file();
        file.set_text("earth.jpg");
        file.set_ref_id(1);
        grpc::CompletionQueue queue;
        std::deque<Call> calls(kAnalyses);
        for (Call& call : calls) {
            world.authorize(call.context);
            call.reader = stub->AsyncAnalyzeImage(&call.context, request, &queue);
            call.reader->Finish(&call.response, &call.status, &call);
        }
        bool good = true;
        for (int i = 0; i < kAnalyses; ++i) {
            void* tag = nullptr;
            bool ok = false;
            good = queue.Next(&tag, &ok) && ok && static_cast<Call*>(tag)->status.ok() &&
                   static_cast<Call*>(tag)->response.analyze_result() && good;
        }
        return good;
    }

private:
    QObject m_Receiver;
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    int m_Passed = 0;
};

void registering(benchmark::State& state, const World& world)
{
    takeTurns(state, registerOurs, [&] { return registerBare(world); });
}

void analyzing(benchmark::State& state, const World& world)
{
    Analyses analyses;
    takeTurns(
        state, [&] { return analyses.runOurs(); }, [&] { return Analyses::runBare(world); });
}

} // namespace

int main(int argc, char** argv)
try {
    const QTemporaryDir images;
    rows::add("10,000 registrations in batches of 500, ns: stub", "registering:ours_p50",
              "registering:bare_p50", rows::Aim::kAtMost, 1.1);
    rows::add("1,000 analyses outstanding at once, ns: stub", "analyzing:ours_p50", "analyzing:bare_p50",
              rows::Aim::kAtMost, 1.1);
    std::optional<World> world;
    return rows::run(argc, argv, [&] {
        world.emplace([&](centre::Store& store) { fill(store, images); });
        benchmark::RegisterBenchmark("registering", registering, std::cref(*world))
            ->Iterations(2)
            ->Repetitions(5);
        benchmark::RegisterBenchmark("analyzing", analyzing, std::cref(*world))
            ->Iterations(4)
            ->Repetitions(5);
    });
} catch (const std::exception& error) {
    std::cerr << "operations_bench: " << error.what() << '\n';
    return 1;
}
