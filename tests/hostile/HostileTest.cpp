// What the other side sends takes at most 256 MiB of memory, and ends with a clear failure.

#include "haulbox.pb.h"
#include "tests/cli/CentreProcess.h"
#include "tests/hostile/HostileServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <mutex>
#include <string>

namespace {

using Answer = HostileServer::Answer;

/// Sanitizers take memory for themselves, which no limit holds.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMeasured = false;
#else
constexpr bool kMeasured = true;
#endif
constexpr long kMostKiB = 262144;
constexpr std::size_t kManyBeans = 30000000;
constexpr char kTooMuch[] = "what arrives takes more memory than it may";
constexpr char kTooMuchParsed[] = "bytes of memory that it may take";
constexpr char kCompressed[] = "Compression algorithm 'gzip' is disabled";

/// What the hostile side answers next.
class NextAnswer
{
public:
    void set(const Answer& answer)
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Answer = answer;
    }
    Answer get()
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return m_Answer;
    }

private:
    std::mutex m_Mutex;
    Answer m_Answer;
};

class HostileTest : public ::testing::Test
{
protected:
    static void expectBounded(long peakKiB, const std::string& what)
    {
        if (kMeasured)
            EXPECT_LE(peakKiB, kMostKiB) << what;
    }

    static void expectFailure(const Outcome& outcome, const Outcome& idle, const std::string& error)
    {
        EXPECT_LT(outcome.exitCode, 128) << outcome.errors;
        EXPECT_NE(outcome.errors.find(error), std::string::npos) << outcome.errors;
        expectBounded(outcome.peakKiB - idle.peakKiB, error);
    }

    CentreProcess centre;
};

} // namespace

TEST_F(HostileTest, AHostileCentreTakesLittleMemory)
{
    NextAnswer next;
    const std::string login("\x08\0\x1A\x02\x08\x07", 6); // result 0, a bean with identifier 7
    HostileServer server([&](const std::string& method, const std::string&) -> Answer {
        if (method == "hello")
            return {repeated("", 1)};
        return method == "queryDataAddress" ? next.get() : Answer{repeated(login, 1)};
    });
    const auto disks = [&] { return centre.shell("LUMO_CENTRE=" + server.address() + " lumo disks"); };
    next.set({repeated(login, 1)});
    const Outcome idle = disks();
    EXPECT_EQ(idle.exitCode, 0) << idle.errors;
    const struct
    {
        Answer answer;
        const char* error;
    } rows[] = {
        {{zeros(15, 1024)}, kTooMuch},
        {{zeros(15, 100)}, "larger than max"},
        {{zeros(15, 64), true}, kCompressed},
        {{emptyMessages(4, kManyBeans)}, kTooMuchParsed},
        {{repeated("\x22", 1 << 20)}, "can't be parsed"},
    };
    for (const auto& row : rows) {
        next.set(row.answer);
        expectFailure(disks(), idle, row.error);
    }
}

TEST_F(HostileTest, AHostileBoxTakesLittleMemoryAlsoOfALimitedAddressSpace)
{
    NextAnswer next;
    std::atomic<bool> folder{false}, opened{false};
    HostileServer server([&](const std::string& method, const std::string&) -> Answer {
        if (method == "hello")
            return {repeated("", 1)};
        if (opened.exchange(true))
            return next.get();
        haulbox::OpenRsp source;
        source.set_status(haulbox::DONE);
        source.set_folder(folder);
        source.set_size(1 << 30);
        source.set_version("1");
        source.set_transfer("1");
        return {repeated(source.SerializeAsString(), 1)};
    });
    centre.done("lumo-centre add-box data B2 " + server.address());
    centre.done("mkdir -p packages/p; lumo-centre add-version data --program P --version 1 --path packages/p "
                "--box B2");
    centre.serve();
    const auto get = [&](const std::string& limit = "unlimited") {
        opened = false;
        return centre.shell("rm -rf p .p.*; ulimit -v " + limit + "; exec lumo get-program P 1 .");
    };
    const std::string notFound("\x08\2", 2);
    next.set({repeated(notFound, 1)});
    const Outcome idle = get();
    haulbox::ListRsp deep;
    deep.set_status(haulbox::DONE);
    haulbox::Entry& file = *deep.add_entries();
    for (int i = 0; i < 300; ++i)
        file.mutable_below()->append("d/");
    file.mutable_below()->append("file");
    const struct
    {
        Answer answer;
        bool isFolder;
        std::vector<std::string> limits;
        const char* error;
    } rows[] = {
        {{zeros(15, 1024)}, false, {"unlimited", "4000000", "400000"}, kTooMuch},
        {{zeros(15, 64), true}, false, {"unlimited"}, kCompressed},
        {{emptyMessages(haulbox::ListRsp::kEntriesFieldNumber, kManyBeans)},
         true,
         {"unlimited", "4000000"},
         kTooMuchParsed},
        {{repeated(deep.SerializeAsString(), 1)}, true, {"unlimited"}, "nested folders"},
    };
    for (const auto& row : rows) {
        next.set(row.answer);
        folder = row.isFolder;
        for (const std::string& limit : row.limits)
            if (kMeasured || limit == "unlimited") // sanitizers need more addresses than that
                expectFailure(get(limit), idle, row.error);
    }
}

TEST_F(HostileTest, AHostileClientTakesLittleMemoryOfACentreAndItsBoxes)
{
    centre.done("mkdir disk; lumo-centre import data disk --disk D --box B1");
    centre.serve();
    std::string token;
    std::getline(std::ifstream(centre.folder() / "token"), token);
    std::string box = centre.done("lumo boxes | sed -n 's/^B1 *//p'");
    box.pop_back();
    const long idle = centre.process().peakKiB();
    const std::string store = "/haulbox.BoxServices/store";
    const std::string save = "/ledgerserver.LedgerServices/saveFullDataByType";
    const struct
    {
        std::string address, method;
        int calls;
        grpc::ByteBuffer request;
        bool gzip;
        const char* error;
    } rows[] = {
        {box, store, 16, emptyMessages(haulbox::StoreReq::kItemsFieldNumber, 1 << 19), false, kTooMuchParsed},
        {centre.address(), save, 16, emptyMessages(42, 1 << 19), false, kTooMuchParsed},
        {box, store, 16, zeros(15, 16), true, kCompressed},
        {centre.address(), save, 1, zeros(15, 40), false, "larger than max"},
        {box, store, 4, zeros(15, 1024), false, "RST_STREAM with error code 11"},
    };
    for (const auto& row : rows) {
        for (const grpc::Status& status :
             callAtOnce(row.address, token, row.method, row.calls, row.request, row.gzip))
            EXPECT_NE(status.error_message().find(row.error), std::string::npos) << status.error_message();
        expectBounded(centre.process().peakKiB() - idle, row.error);
    }
    EXPECT_EQ(centre.stop(), 0);
}
