#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "tests/client/ClientCentre.h"
#include "tests/support/Files.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>

namespace {

using lumo::Session;
using lumo::Transfer;
using lumo::Transfers;
using Kind = lumo::Error::Kind;

/// A local file that takes many chunks.
std::string bigFile(const std::string& path)
{
    std::ofstream file(path);
    for (char chunk = 0; chunk < 24; ++chunk)
        file << std::string(1U << 20, chunk);
    return path;
}

TEST_F(ClientCentre, TreeIsSentAndFetchedWithProgressUpToItsOutcome)
{
    serve({});
    const Session session(settings());
    const lumo::Entry disk = session.catalogue().find("/earth");
    bigFile(below("影像"));
    std::vector<Transfer::Progress> told;
    Transfers::Options options;
    options.observer = [&told](const Transfer::Progress& progress) { told.push_back(progress); };
    const Transfer sent = session.transfers().put(below("影像"), disk, options);
    EXPECT_TRUE(sent.wait().done()) << sent.wait().text;
    EXPECT_EQ(sent.wait().keptFiles, 0U);
    EXPECT_EQ(sent.wait().movedBytes, 24U << 20);

    ASSERT_GE(told.size(), 3U);
    EXPECT_THAT(told.front().task, testing::StartsWith("影像{"));
    EXPECT_EQ(told.front().percent, 0);
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end(), [](const auto& left, const auto& right) {
        return left.percent < right.percent;
    }));
    EXPECT_EQ(told.back().percent, 100);
    EXPECT_TRUE(told.back().outcome && told.back().outcome->done());
    EXPECT_FALSE(told.front().outcome);

    std::filesystem::create_directory(below("here"));
    EXPECT_EQ(session.transfers().get(disk, below("here"), {}).wait().keptFiles, 0U);
    EXPECT_EQ(session.transfers().get(disk, below("here"), {}).wait().keptFiles, 1U);
    EXPECT_EQ(treeOf(below("here/earth")), treeOf(below("earth")));
    EXPECT_EQ(session.transfers().put(below("影像"), disk, {}).wait().keptFiles, 1U);
}

TEST_F(ClientCentre, TransferThatFailsSaysWhy)
{
    serve({"a/gone.txt", "b.txt"});
    const Session session(settings());
    const lumo::Catalogue catalogue = session.catalogue();
    std::filesystem::remove(below("earth/a/gone.txt"));
    std::filesystem::create_directory(below("here"));
    const Transfer::Outcome outcome =
        session.transfers().get(catalogue.find("/earth/a"), below("here"), {}).wait();
    EXPECT_EQ(outcome.code, bulkhaul::kNotFound);
    EXPECT_THAT(outcome.text, testing::HasSubstr(below("earth/a/gone.txt")));
    EXPECT_FALSE(outcome.resumes);

    const lumo::Entry file = catalogue.find("/earth/b.txt");
    EXPECT_NE(errorOf([&] { session.transfers().put(below("token"), file, {}); }), std::nullopt)
        << "a file is not a target";
    EXPECT_EQ(errorOf([&] { session.transfers().getPackage({}, "1.0", {}, below("here"), {}); }),
              Kind::NotFound);
}

/// Transfers that outlive what their application holds of them.
class ClosedWindow : public ClientCentre
{
protected:
    ClosedWindow() { bigFile(below("big")); }

    /// Starts to send, with an observer that `firstCall` is given to at its first call. Whatever is reported
    /// after m_Gone was set comes too late.
    Transfer send(const std::function<void()>& firstCall)
    {
        Transfers::Options options;
        options.observer = [this, firstCall](const Transfer::Progress&) {
            EXPECT_FALSE(m_Gone);
            if (!m_Called.exchange(true))
                firstCall();
        };
        return m_Session->transfers().put(below("big"), m_Session->catalogue().find("/earth"), options);
    }

    std::optional<Session> m_Session;
    std::atomic<bool> m_Called{false};
    std::atomic<bool> m_Gone{false};
};

TEST_F(ClosedWindow, HearsNothingMoreThoughItsTransfersGoOn)
{
    serve({});
    m_Session.emplace(settings());
    std::promise<void> begun;
    const Transfer transfer = send([&] { begun.set_value(); });
    begun.get_future().wait();
    m_Session.reset();
    m_Gone = true;
    EXPECT_TRUE(transfer.wait().done()) << transfer.wait().text;
    // The connection is free again.
    m_Session.emplace(settings());
    EXPECT_EQ(m_Session->catalogue().find("/earth/big").name, "big");
}

TEST_F(ClosedWindow, MayCloseFromItsOwnObserver)
{
    serve({});
    m_Session.emplace(settings());
    const Transfer transfer = send([this] {
        m_Session->close();
        m_Gone = true;
    });
    EXPECT_TRUE(transfer.wait().done()) << transfer.wait().text;
    EXPECT_EQ(errorOf([&] { m_Session->catalogue().disks(); }), Kind::Closed);
}

TEST_F(ClosedWindow, IsClosedForAllWhoCloseItAtOnce)
{
    serve({});
    m_Session.emplace(settings());
    const lumo::Catalogue catalogue = m_Session->catalogue();
    std::promise<void> begun;
    std::promise<void> closing;
    std::atomic<bool> left{false};
    const Transfer transfer = send([&] {
        begun.set_value();
        closing.get_future().wait();
        m_Session->close(); // both others wait for this observer
        for (int turn = 0; turn < 10000; ++turn)
            std::this_thread::yield(); // one that does not wait returns
        left = true;
    });
    begun.get_future().wait();
    const auto first = std::async(std::launch::async, [this] { m_Session->close(); });
    while (errorOf([&] { catalogue.disks(); }) != Kind::Closed)
        std::this_thread::yield();
    closing.set_value();
    m_Session->close();
    EXPECT_TRUE(left);
    m_Gone = true;
    EXPECT_TRUE(transfer.wait().done()) << transfer.wait().text;
}

TEST_F(ClosedWindow, MayDropATransferFromItsOwnObserver)
{
    serve({});
    m_Session.emplace(settings());
    std::promise<std::unique_ptr<Transfer>> handle;
    std::promise<void> dropped;
    auto transfer = std::make_unique<Transfer>(send([&] {
        handle.get_future().get().reset();
        m_Gone = true;
        dropped.set_value();
    }));
    handle.set_value(std::move(transfer));
    dropped.get_future().wait();
    m_Session.reset();
    // A second session can be opened once the transfer has ended.
    while (errorOf([&] { m_Session.emplace(settings()); }) == Kind::Busy)
        std::this_thread::yield();
    EXPECT_EQ(m_Session->catalogue().find("/earth/big").name, "big");
}

TEST_F(ClosedWindow, LeavesCallsOfOtherThreadsToTheirEnd)
{
    serve({"a.txt"});
    m_Session.emplace(settings());
    const lumo::Catalogue catalogue = m_Session->catalogue();
    std::atomic<int> answers{0};
    auto calls = std::async(std::launch::async, [&] {
        return errorOf([&] {
            for (;; ++answers)
                EXPECT_EQ(catalogue.find("/earth/a.txt").name, "a.txt");
        });
    });
    while (answers < 3)
        std::this_thread::yield();
    m_Session.reset();
    EXPECT_EQ(calls.get(), Kind::Closed);
}

} // namespace
