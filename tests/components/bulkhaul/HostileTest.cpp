// A misbehaving box, a misbehaving client, and links that lead astray.

#include "components/bulkhaul/Chunks.h"
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
            scripted.script("read status: DONE folder: true\nlist status: DONE entries { below: '" + name +
                            "' folder: " + folder + " }");
            EXPECT_EQ(move(Way::Down, testBox, "tree"), kUnsafeName) << name;
            EXPECT_TRUE(fs::is_empty(here() / "tree")) << name;
        }
    fs::remove(here() / "tree");
    writeFile(here() / "up/file", "");
    const std::string folder = "read status: DONE folder: true\n";
    const struct
    {
        Way way;
        const char* name;
        int code;
        std::string script;
    } rows[] = {
        {Way::Down, "x", kNotUnderstood, "read folder: true"},
        {Way::Down, "x", kNotUnderstood, "read status: KEPT size: 1 data: 'x'"},
        {Way::Up, "up", kNotUnderstood, "store status: KEPT"},
        {Way::Down, "x", kNotUnderstood, folder + "list status: DONE more: true"},
        {Way::Down, "x", kNotUnderstood,
         folder + "list status: DONE more: true entries { below: 'a' folder: true }"},
        {Way::Down, "x", kNotUnderstood, "read status: DONE size: 1152921504606846976 data: 'x'"},
        {Way::Down, "x", kCorrupted, "read status: DONE size: 2 data: 'x' digest: 'y'"},
        {Way::Down, "x", kNotFound, "read status: NOT_FOUND reason: 'no\\nsuch'"},
        {Way::Down, "x", kNotUnderstood,
         folder + "list status: DONE entries { below: 'b' }\nfetch status: DONE"},
        {Way::Up, "up", kNotUnderstood, "store wanted: 0"},
        {Way::Up, "up", kNotUnderstood, "store status: DONE existed: true wanted: 0"},
        {Way::Up, "up", kNotUnderstood, "store status: DONE existed: true wanted: 5"},
    };
    for (const auto& row : rows) {
        scripted.script(row.script);
        EXPECT_EQ(move(row.way, testBox, row.name), row.code) << row.script;
        EXPECT_FALSE(fs::is_regular_file(here() / "x"));
    }
}

TEST_F(TransferTest, ABoxRefusesWhatNoClientMayAsk)
{
    TestBox testBox(*catalogue);
    writeFile(box() / "large", content(2 * kMiB, 1));
    const auto mine = testBox.channel();
    const auto ask = [](wirecall::RpcChannel& channel, const auto& operation, const auto& request,
                        auto response) {
        haulbox::BoxServices_Stub stub(&channel);
        wirecall::RpcController controller;
        (stub.*operation)(&controller, &request, &response, nullptr);
        EXPECT_FALSE(controller.Failed()) << controller.ErrorText();
        return response;
    };
    using Stub = haulbox::BoxServices_Stub;

    haulbox::ReadReq read;
    read.set_path((box() / "large").string());
    for (const std::uint64_t offset : {std::uint64_t(1), std::uint64_t(2 * kMiB), ~std::uint64_t(0)}) {
        read.set_offset(offset);
        EXPECT_EQ(ask(*mine, &Stub::read, read, haulbox::ReadRsp()).status(), haulbox::FAILED) << offset;
    }

    haulbox::StoreReq store;
    store.set_path(box().string() + "/in");
    haulbox::Item& item = *store.add_items();
    item.set_data("x");
    item.set_digest("not its digest");
    EXPECT_EQ(ask(*mine, &Stub::store, store, haulbox::StoreRsp()).status(), haulbox::CORRUPTED);
    for (const std::string& below :
         std::vector<std::string>{"../x", "a/../../x", "/x", std::string(4096, 'x')}) {
        item.set_below(below);
        EXPECT_EQ(ask(*mine, &Stub::store, store, haulbox::StoreRsp()).status(), haulbox::UNSAFE_NAME);
    }

    haulbox::BeginReq begin;
    begin.set_path(box().string() + "/up");
    begin.set_size(2 * kMiB);
    const haulbox::BeginRsp begun = ask(*mine, &Stub::begin, begin, haulbox::BeginRsp());
    EXPECT_EQ(begun.status(), haulbox::DONE);
    haulbox::WriteReq write;
    write.set_upload(begun.upload());
    write.set_data(content(kMiB, 2));
    write.set_digest(toBytes(digestOf(write.data())));
    write.set_offset(2 * kMiB);
    EXPECT_EQ(ask(*mine, &Stub::write, write, haulbox::WriteRsp()).status(), haulbox::FAILED);
    write.set_offset(0);
    EXPECT_EQ(ask(*mine, &Stub::write, write, haulbox::WriteRsp()).status(), haulbox::DONE);
    haulbox::FinishReq finish;
    finish.set_upload(begun.upload());
    EXPECT_EQ(ask(*mine, &Stub::finish, finish, haulbox::FinishRsp()).status(), haulbox::FAILED); // a hole
    EXPECT_EQ(ask(*mine, &Stub::write, write, haulbox::WriteRsp()).status(), haulbox::BUSY); // it has ended
    EXPECT_FALSE(fs::exists(box() / "up"));
    const haulbox::BeginRsp first = ask(*mine, &Stub::begin, begin, haulbox::BeginRsp());
    EXPECT_EQ(first.found_size(), kMiB);
    EXPECT_EQ(ask(*mine, &Stub::begin, begin, haulbox::BeginRsp()).status(), haulbox::DONE);
    write.set_upload(first.upload());
    EXPECT_EQ(ask(*mine, &Stub::write, write, haulbox::WriteRsp()).status(), haulbox::BUSY); // superseded
}
