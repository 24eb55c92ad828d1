// A misbehaving box, a misbehaving client, and links that lead astray.

#include "components/bulkhaul/files/Chunks.h"
#include "components/wirecall/Streams.h"
#include "lumo/components/wirecall/RpcController.h"
#include "tests/components/bulkhaul/TestBox.h"

#include <google/protobuf/text_format.h>

#include <sstream>

using namespace bulkhaul;

TEST_F(TransferTest, NothingIsWrittenThroughALinkThatIsPlantedInTheTarget)
{
    TestBox testBox(*catalogue);
    const fs::path outside = box().parent_path() / "outside";
    fs::create_directories(outside);
    for (const Way way : {Way::Down, Way::Up}) {
        writeFile(source(way) / "tree/sub/file", "new");
        fs::create_directories(target(way) / "tree");
        fs::create_symlink(outside, target(way) / "tree/sub");
        EXPECT_EQ(move(way, testBox, "tree"), kWrongKind);
        EXPECT_TRUE(fs::is_empty(outside));
        writeFile(source(way) / "file", "new");
        writeFile(outside / "victim", "old");
        fs::create_symlink(outside / "victim", target(way) / "file");
        fs::create_symlink(outside / "victim", target(way) / ".other.lumo-part");
        writeFile(source(way) / "other", "new");
        EXPECT_EQ(move(way, testBox, "file"), kDone);
        EXPECT_EQ(move(way, testBox, "other"), kWrongKind);
        EXPECT_EQ(summaryOf(outside / "victim"), "old");
        EXPECT_EQ(summaryOf(target(way) / "file"), "new");
        fs::remove_all(outside / "victim");
        fs::remove_all(source(way));
        fs::remove_all(target(way));
        fs::create_directories(box());
        fs::create_directories(here());
    }
}

namespace {

/// Answers every request with the response of its operation in protobuf's text format.
class ScriptedBox : public google::protobuf::Service
{
public:
    /// Lines of "OPERATION RESPONSE".
    void script(const std::string& answers)
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Answers = answers;
    }

    void CallMethod(const google::protobuf::MethodDescriptor* method, google::protobuf::RpcController*,
                    const google::protobuf::Message*, google::protobuf::Message* response,
                    google::protobuf::Closure* done) override
    {
        {
            const std::lock_guard<std::mutex> lock(m_Mutex);
            std::istringstream answers(m_Answers);
            for (std::string answer; std::getline(answers, answer);)
                if (answer.rfind(method->name() + " ", 0) == 0) {
                    EXPECT_TRUE(google::protobuf::TextFormat::ParseFromString(
                        answer.substr(method->name().size()), response));
                }
        }
        done->Run();
    }

    const google::protobuf::ServiceDescriptor* GetDescriptor() override
    {
        return haulbox::BoxServices::descriptor();
    }
    const google::protobuf::Message&
    GetRequestPrototype(const google::protobuf::MethodDescriptor* method) const override
    {
        return prototype(method->input_type());
    }
    const google::protobuf::Message&
    GetResponsePrototype(const google::protobuf::MethodDescriptor* method) const override
    {
        return prototype(method->output_type());
    }

private:
    static const google::protobuf::Message& prototype(const google::protobuf::Descriptor* type)
    {
        return *google::protobuf::MessageFactory::generated_factory()->GetPrototype(type);
    }

    std::mutex m_Mutex;
    std::string m_Answers;
};

} // namespace

TEST_F(TransferTest, HostileAnswersOfABoxEndTheTransferBeforeAnythingIsWritten)
{
    ScriptedBox scripted;
    TestBox testBox(*catalogue, {}, &scripted);
    for (const std::string name :
         {"../evil", "/tmp/evil", "a/../../evil", "..", ".", "", "a//b", "a/", ".x.lumo-part"})
        for (const std::string folder : {"false", "true"}) {
            if (name.empty() && folder == "true")
                continue; // the target itself
            scripted.script("open status: DONE folder: true\nlist status: DONE entries { below: '" + name +
                            "' folder: " + folder + " }");
            EXPECT_EQ(move(Way::Down, testBox, "tree"), kUnsafeName) << name;
            EXPECT_TRUE(fs::is_empty(here() / "tree")) << name;
        }
    fs::remove(here() / "tree");
    writeFile(here() / "up/file", "");
    writeFile(here() / "large", content(2 * kMiB, 1));
    const std::string folder = "open status: DONE folder: true\n";
    const std::string large = "open status: DONE size: 2097152 version: 'v' transfer: 't'\n";
    const std::string begun = "begin status: DONE upload: 'u'\n";
    std::string deep = "d";
    for (int i = 0; i < 256; ++i)
        deep += "/d";
    const struct
    {
        Way way;
        const char* name;
        int code;
        std::string script;
    } rows[] = {
        {Way::Down, "x", kNotUnderstood, "open folder: true"},
        {Way::Down, "x", kNotUnderstood, "open status: KEPT size: 1 data: 'x'"},
        {Way::Up, "up", kNotUnderstood, "store status: KEPT"},
        {Way::Down, "x", kNotUnderstood, folder + "list status: DONE more: true"},
        {Way::Down, "x", kNotUnderstood,
         folder + "list status: DONE more: true entries { below: 'a' folder: true }"},
        {Way::Down, "x", kUnsafeName,
         folder + "list status: DONE entries { below: '" + deep + "' folder: true }"},
        {Way::Down, "x", kNotUnderstood, "open status: DONE size: 1152921504606846976 transfer: 't'"},
        {Way::Down, "x", kCorrupted, "open status: DONE size: 2 data: 'x' digest: 'y'"},
        {Way::Down, "x", kNotFound, "open status: NOT_FOUND reason: 'no\\nsuch'"},
        {Way::Down, "x", kNotUnderstood,
         folder + "list status: DONE entries { below: 'b' }\nfetch status: DONE"},
        {Way::Down, "y", kNotUnderstood, large},
        {Way::Down, "y", kNotUnderstood, large + "read status: KEPT"},
        {Way::Down, "y", kSourceChanged, large + "read status: CHANGED"},
        {Way::Down, "y", kCorrupted, large + "read status: DONE"},
        {Way::Down, "y", kCorrupted, large + "read status: DONE offset: 1048576 data: 'x'"},
        {Way::Up, "up", kNotUnderstood, "store wanted: 0\nreserve status: DONE"},
        {Way::Up, "up", kNotUnderstood, "reserve status: DONE\nstore status: DONE existed: true wanted: 0"},
        {Way::Up, "up", kNotUnderstood, "reserve status: DONE\nstore status: DONE existed: true wanted: 5"},
        {Way::Up, "large", kNotUnderstood, begun},
        {Way::Up, "large", kNoSpace, begun + "write status: NO_SPACE"},
        {Way::Up, "large", kNotUnderstood, begun + "write status: DONE"}, // before the second chunk
        {Way::Up, "large", kBusy, begun + "write status: ENDED"},
        {Way::Up, "large", kBusy, "begin status: BUSY other_bytes: 7"},
        {Way::Up, "large", kNotUnderstood, "begin status: DONE found_size: 2097153"},
    };
    for (const auto& row : rows) {
        scripted.script(row.script);
        setStallLimit(row.script.find("BUSY") == std::string::npos ? 60000 : 300);
        EXPECT_EQ(move(row.way, testBox, row.name), row.code) << row.script;
        EXPECT_FALSE(fs::is_regular_file(here() / row.name) && row.way == Way::Down);
    }
}

namespace {

const google::protobuf::MethodDescriptor& method(const char* name)
{
    return *haulbox::BoxServices::descriptor()->FindMethodByName(name);
}

/// Makes the calls of a client that knows no rules.
class Caller
{
public:
    explicit Caller(boost::shared_ptr<wirecall::RpcChannel> channel) : m_Channel(std::move(channel)) {}

    template <class Operation, class Request, class Response>
    Response ask(Operation operation, const Request& request, Response response)
    {
        haulbox::BoxServices_Stub stub(m_Channel.get());
        wirecall::RpcController controller;
        (stub.*operation)(&controller, &request, &response, nullptr);
        EXPECT_FALSE(controller.Failed()) << controller.ErrorText();
        return response;
    }

    /// Sends one chunk of 1 MiB.
    haulbox::Status write(const std::string& upload, std::uint64_t offset)
    {
        wirecall::RpcController controller;
        wirecall::StreamWriter writer(*m_Channel, method("write"), controller);
        const std::string bytes = content(kMiB, 2);
        wirecall::OutgoingBuffer data(kMiB);
        std::copy(bytes.begin(), bytes.end(), data.data());
        haulbox::Chunk head;
        head.set_upload(upload);
        head.set_offset(offset);
        head.set_digest(toBytes(digestOf(bytes)));
        writer.write(head, std::move(data));
        haulbox::WriteRsp response;
        EXPECT_TRUE(writer.finish(response)) << controller.ErrorText();
        return response.status();
    }

    haulbox::Status read(const haulbox::RunReq& request)
    {
        wirecall::RpcController controller;
        wirecall::StreamReader reader(*m_Channel, method("read"), controller, request);
        haulbox::Chunk head;
        wirecall::Payload data;
        EXPECT_TRUE(reader.read(head, data)) << controller.ErrorText();
        return head.status();
    }

private:
    const boost::shared_ptr<wirecall::RpcChannel> m_Channel;
};

using Stub = haulbox::BoxServices_Stub;

} // namespace

TEST_F(TransferTest, ABoxRefusesWhatNoClientMayAsk)
{
    TestBox testBox(*catalogue);
    writeFile(box() / "large", content(2 * kMiB, 1));
    Caller mine(testBox.channel());

    haulbox::OpenReq open;
    open.set_path((box() / "large").string());
    const haulbox::OpenRsp opened = mine.ask(&Stub::open, open, haulbox::OpenRsp());
    haulbox::RunReq run;
    run.set_version(opened.version());
    run.set_chunks(1);
    EXPECT_EQ(mine.read(run), haulbox::ENDED); // without a handle
    run.set_transfer(opened.transfer());
    for (const std::uint64_t first : {std::uint64_t(2), ~std::uint64_t(0)}) {
        run.set_first_chunk(first);
        EXPECT_EQ(mine.read(run), haulbox::FAILED) << first;
    }
    run.set_below("../large");
    EXPECT_EQ(mine.read(run), haulbox::UNSAFE_NAME);

    haulbox::StoreReq store;
    store.set_path(box().string() + "/in");
    haulbox::Item& item = *store.add_items();
    item.set_data("x");
    item.set_digest("not its digest");
    EXPECT_EQ(mine.ask(&Stub::store, store, haulbox::StoreRsp()).status(), haulbox::CORRUPTED);
    for (const std::string& below :
         std::vector<std::string>{"../x", "a/../../x", "/x", std::string(4096, 'x')}) {
        item.set_below(below);
        EXPECT_EQ(mine.ask(&Stub::store, store, haulbox::StoreRsp()).status(), haulbox::UNSAFE_NAME);
    }
    store.set_transfer(opened.transfer()); // of a download
    EXPECT_EQ(mine.ask(&Stub::store, store, haulbox::StoreRsp()).status(), haulbox::ENDED);
}

TEST_F(TransferTest, AnUploadEndsWhenItIsFinishedOrAnotherBeginsUnlessItIsBusy)
{
    TestBox testBox(*catalogue, {}, nullptr, std::chrono::milliseconds(0));
    Caller mine(testBox.channel());
    haulbox::BeginReq begin;
    begin.set_path(box().string() + "/up");
    begin.set_size(2 * kMiB);
    const auto begun = [&] { return mine.ask(&Stub::begin, begin, haulbox::BeginRsp()); };
    const haulbox::BeginRsp first = begun();
    EXPECT_EQ(first.status(), haulbox::DONE);
    EXPECT_EQ(mine.write(first.upload(), 2 * kMiB), haulbox::FAILED); // beyond the end
    EXPECT_EQ(mine.write(first.upload(), 0), haulbox::DONE);
    haulbox::FinishReq finish;
    finish.set_upload(first.upload());
    EXPECT_EQ(mine.ask(&Stub::finish, finish, haulbox::FinishRsp()).status(), haulbox::FAILED); // a hole
    EXPECT_EQ(mine.write(first.upload(), 0), haulbox::ENDED);
    EXPECT_FALSE(fs::exists(box() / "up"));

    const haulbox::BeginRsp second = begun();
    EXPECT_EQ(second.found_size(), kMiB);
    EXPECT_EQ(begun().status(), haulbox::DONE);
    EXPECT_EQ(mine.write(second.upload(), 0), haulbox::ENDED); // another has its place

    TestBox patient(*catalogue, {}, nullptr, std::chrono::hours(1));
    Caller other(patient.channel());
    begin.set_path(box().string() + "/busy");
    const haulbox::BeginRsp third = other.ask(&Stub::begin, begin, haulbox::BeginRsp());
    EXPECT_EQ(other.write(third.upload(), kMiB), haulbox::DONE);
    const haulbox::BeginRsp busy = other.ask(&Stub::begin, begin, haulbox::BeginRsp());
    EXPECT_EQ(busy.status(), haulbox::BUSY);
    EXPECT_EQ(busy.other_bytes(), kMiB);
    EXPECT_EQ(other.write(third.upload(), 0), haulbox::DONE);
}

TEST_F(TransferTest, NamesThatAnUploadHasReservedCanNotBecomeTheOtherKind)
{
    TestBox testBox(*catalogue);
    Caller mine(testBox.channel());
    haulbox::StoreReq store;
    store.set_path(box().string() + "/tree");
    store.add_items()->set_folder(true);
    haulbox::ReserveReq requests[2];
    for (haulbox::ReserveReq& request : requests)
        request.set_transfer(mine.ask(&Stub::store, store, haulbox::StoreRsp()).transfer());
    requests[0].add_entries()->set_below("a");
    requests[0].add_entries()->set_below("b");
    requests[0].mutable_entries(1)->set_folder(true);
    const auto reserved = [&](int i) {
        return mine.ask(&Stub::reserve, requests[i], haulbox::ReserveRsp()).status();
    };
    EXPECT_EQ(reserved(0), haulbox::DONE);
    *requests[1].mutable_entries() = requests[0].entries();
    EXPECT_EQ(reserved(1), haulbox::DONE); // the same kinds
    requests[1].mutable_entries(1)->set_folder(false);
    EXPECT_EQ(reserved(1), haulbox::WRONG_KIND);
    requests[0].clear_entries();
    EXPECT_EQ(reserved(0), haulbox::DONE);
    EXPECT_EQ(reserved(1), haulbox::DONE);
    fs::create_directories(box() / "tree/b");
    EXPECT_EQ(reserved(1), haulbox::WRONG_KIND);
    requests[1].mutable_entries(1)->set_below("../b");
    EXPECT_EQ(reserved(1), haulbox::UNSAFE_NAME);
}

TEST_F(TransferTest, OfTooManyHandlesTheOneThatWasIdleForLongestEnds)
{
    TestBox testBox(*catalogue);
    Caller mine(testBox.channel());
    writeFile(box() / "large", content(2 * kMiB, 1));
    haulbox::BeginReq begin;
    begin.set_size(2 * kMiB);
    std::vector<std::string> uploads;
    for (int i = 0; i <= 64; ++i) {
        if (i == 64)
            EXPECT_EQ(mine.write(uploads.front(), 0), haulbox::DONE); // so the second is idle for longest
        begin.set_path(box().string() + "/up" + std::to_string(i));
        uploads.push_back(mine.ask(&Stub::begin, begin, haulbox::BeginRsp()).upload());
    }
    EXPECT_EQ(mine.write(uploads[0], kMiB), haulbox::DONE);
    EXPECT_EQ(mine.write(uploads[1], 0), haulbox::ENDED);

    haulbox::OpenReq open;
    open.set_path((box() / "large").string());
    haulbox::RunReq run;
    run.set_chunks(1);
    std::vector<std::string> transfers;
    for (int i = 0; i <= 1024; ++i) {
        const haulbox::OpenRsp opened = mine.ask(&Stub::open, open, haulbox::OpenRsp());
        run.set_version(opened.version());
        transfers.push_back(opened.transfer());
    }
    run.set_transfer(transfers.front());
    EXPECT_EQ(mine.read(run), haulbox::ENDED);
    run.set_transfer(transfers[1]);
    EXPECT_EQ(mine.read(run), haulbox::DONE);
}
