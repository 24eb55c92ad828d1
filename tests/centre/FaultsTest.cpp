#include "tests/centre/CentreSupport.h"

#include <atomic>
#include <thread>

using testing::HasSubstr;

namespace {

TEST(Faults, RefuseWhatIsNoFault)
{
    DataFolder data;
    for (const char* text :
         {"", "queryDataAddress", "queryDataAddress=", "queryDataAddress@0=stall", "queryDataAddress@=stall",
          "queryDataAddress=result:", "queryDataAddress=result:x", "queryDataAddress=burn",
          "noSuchOperation=stall", "hello=result:1", " queryDataAddress=stall", "queryDataAddress=corrupt",
          "queryDataAddress@2=break:1", "queryDataAddress=break:", "getKestaInfo=result:1", "read=stall"}) {
        centre::ServeOptions options;
        options.faults = {text};
        EXPECT_THROW(centre::Centre(data.path(), options), centre::Error) << text;
    }
}

TEST(Faults, OfTheDataCountBytesAndAreApartFromThoseOfCalls)
{
    centre::Faults faults;
    for (const char* text : {"read@2=corrupt", "read=break:10", "read=refuse"})
        faults.add(text);
    std::vector<int> kinds;
    for (const std::uint64_t bytes : {4, 4, 2, 1, 0}) {
        const auto fault = faults.firesOnData("read", bytes);
        kinds.push_back(fault ? static_cast<int>(fault->kind) : -1);
    }
    const int corrupt = static_cast<int>(centre::Fault::Kind::Corrupt);
    const int broken = static_cast<int>(centre::Fault::Kind::Break);
    EXPECT_THAT(kinds, testing::ElementsAre(-1, corrupt, -1, broken, broken));
    EXPECT_EQ(faults.fires("read")->kind, centre::Fault::Kind::Refuse);
    EXPECT_FALSE(faults.firesOnData("write", 100));
}

using FaultyCentre = CentreTest;

/// A call that nobody waits for.
struct PendingCall
{
    wirecall::RpcController controller;
    ledgerserver::UserUtilBeanReq request;
    ledgerserver::UserUtilBeanRsp response;
};

void countDown(std::atomic<int>* left)
{
    --*left;
}

TEST_F(FaultyCentre, StalledCallsHoldUpNoOthersAndEndWithTheCentre)
{
    centre::ServeOptions options;
    options.faults = {"queryUserTableByUserName=stall"};
    serve(options);
    constexpr int kCalls = 40; // more than the server has threads
    ledgerserver::LedgerServices_Stub stub(m_Channel.get());
    PendingCall calls[kCalls];
    std::atomic<int> left{kCalls};
    for (PendingCall& call : calls)
        stub.queryUserTableByUserName(&call.controller, &call.request, &call.response,
                                      google::protobuf::NewCallback(&countDown, &left));
    while (m_Centre->faultCounts()[0].fired < kCalls)
        std::this_thread::yield();
    EXPECT_THAT(ask("queryCompanyTableByCompanyNo", "companyno: 'LUMO'"), HasSubstr("result: 0"));
    EXPECT_EQ(left, kCalls);
    m_Centre->stop();
    while (left > 0)
        std::this_thread::yield();
    for (const PendingCall& call : calls)
        EXPECT_TRUE(call.controller.Failed());
}

} // namespace
