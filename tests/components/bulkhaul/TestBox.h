#ifndef LUMO_TESTS_TESTBOX_H
#define LUMO_TESTS_TESTBOX_H

#include "centre/box/BoxService.h"
#include "centre/endpoint/Faults.h"
#include "centre/endpoint/FaultyService.h"
#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/components/bulkhaul/TransferEnd.h"
#include "lumo/components/wirecall/RpcChannel.h"
#include "lumo/components/wirecall/RpcServer.h"
#include "tests/support/Files.h"

#include <google/protobuf/wrappers.pb.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;

constexpr std::size_t kMiB = std::size_t(1024) * 1024;

inline std::string content(std::size_t size, unsigned seed)
{
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; i += 4) {
        const std::uint32_t four = random();
        bytes.replace(i, 4, reinterpret_cast<const char*>(&four), std::min<std::size_t>(4, size - i));
    }
    return bytes;
}

/// A catalogue that admits everything below one folder and records what comes.
class TestCatalogue : public centre::BoxCatalogue
{
public:
    explicit TestCatalogue(std::string root) : m_Root(std::move(root)) {}

    std::optional<Place> admit(const std::string&, const haulbox::Carried& carried, const std::string& path,
                               Use, std::string& reason) override
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_LastMessage = carried.type_name() + ":" + carried.body();
        if (m_OnAdmit)
            m_OnAdmit(++m_Admitted);
        if (path.rfind(m_Root + "/", 0) != 0) {
            reason = path + " is not on this box";
            return std::nullopt;
        }
        return Place{m_Root, path.substr(m_Root.size() + 1)};
    }

    bool mayUse(const std::string&, Use) override { return true; }

    void record(const std::vector<Entry>& entries) override
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        for (const Entry& entry : entries)
            m_Recorded[entry.path] = entry.folder;
    }

    /// Called at each request with its number from now on, from 1.
    void onAdmit(std::function<void(int)> function)
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_OnAdmit = std::move(function);
        m_Admitted = 0;
    }

    std::string lastMessage()
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return m_LastMessage;
    }

    /// Each path, and whether it is a folder.
    std::map<std::string, bool> recorded()
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return m_Recorded;
    }

private:
    const std::string m_Root;
    std::mutex m_Mutex; ///< guards what follows
    std::function<void(int)> m_OnAdmit;
    int m_Admitted = 0;
    std::string m_LastMessage;
    std::map<std::string, bool> m_Recorded;
};

/// The file service of a real box, or another service in its place, on a free loopback port.
class TestBox
{
public:
    explicit TestBox(centre::BoxCatalogue& catalogue, const std::vector<std::string>& faults = {},
                     google::protobuf::Service* instead = nullptr,
                     std::chrono::milliseconds pause = std::chrono::milliseconds(1000))
        : m_Service(catalogue, m_Faults, pause), m_Faulty(instead ? *instead : m_Service, m_Faults)
    {
        centre::addFaults(m_Faults, faults, {haulbox::BoxServices::descriptor()});
        wirecall::RpcServer::Options options;
        options.address = "127.0.0.1:0";
        options.threads = 4;
        options.authenticate = [this](const wirecall::ServerCall& call, std::string& reason) {
            {
                const std::lock_guard<std::mutex> lock(m_Mutex);
                if (m_OnCall)
                    m_OnCall(call.method());
            }
            reason = "wrong token";
            return call.token() == "right";
        };
        m_Server.add(&m_Faulty);
        std::string error;
        EXPECT_TRUE(m_Server.start(options, error)) << error;
    }

    int port() const { return m_Server.port(); }

    boost::shared_ptr<wirecall::RpcChannel> channel(int port, const std::string& token = "right") const
    {
        std::string error;
        wirecall::ChannelOptions options;
        options.address = "127.0.0.1:" + std::to_string(port);
        options.token = token;
        return wirecall::openChannel(options, error);
    }
    boost::shared_ptr<wirecall::RpcChannel> channel() const { return channel(port()); }

    void stop() { m_Server.stop(0); }
    /// Sets what is called with the name of each method before it runs.
    void onCall(std::function<void(const std::string&)> function)
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_OnCall = std::move(function);
    }
    centre::Faults& faults() { return m_Faults; }

private:
    std::mutex m_Mutex;
    std::function<void(const std::string&)> m_OnCall;
    centre::Faults m_Faults;
    centre::BoxService m_Service;
    centre::FaultyService m_Faulty;
    wirecall::RpcServer m_Server;
};

enum class Way
{
    Down,
    Up
};

/// A folder "box" and a folder "here", and transfers between "box/NAME" and "here/NAME".
class TransferTest : public ::testing::Test
{
protected:
    TransferTest() : m_Folder(fs::temp_directory_path() / "lumo-haul-XXXXXX")
    {
        std::string pattern = m_Folder.string();
        m_Folder = fs::canonical(::mkdtemp(pattern.data()));
        fs::create_directories(box());
        fs::create_directories(here());
        catalogue = std::make_unique<TestCatalogue>(box().string());
        bulkhaul::setStallLimit(60000);
        bulkhaul::setEndFunction([this](const bulkhaul::TransferEnd& ended) {
            end = ended;
            endThread = std::this_thread::get_id();
        });
    }
    ~TransferTest() override
    {
        bulkhaul::setEndFunction({});
        fs::remove_all(m_Folder);
    }

    fs::path box() const { return m_Folder / "box"; }
    fs::path here() const { return m_Folder / "here"; }
    fs::path source(Way way) const { return way == Way::Down ? box() : here(); }
    fs::path target(Way way) const { return way == Way::Down ? here() : box(); }

    int move(Way way, const boost::shared_ptr<wirecall::RpcChannel>& channel, const std::string& name,
             bool keepExisting = false, const bulkhaul::ProgressFunction& progress = {})
    {
        google::protobuf::StringValue message;
        message.set_value("ada");
        const auto mover = way == Way::Down ? &bulkhaul::Download : &bulkhaul::Upload;
        end = {};
        const int code = mover(channel, (box() / name).string(), (here() / name).string(), keepExisting,
                               progress, &message, nullptr);
        EXPECT_EQ(end.code, code);
        EXPECT_EQ(end.reason.empty(), code == bulkhaul::kDone);
        EXPECT_EQ(end.boxPath, (box() / name).string());
        EXPECT_EQ(end.localPath, (here() / name).string());
        return code;
    }

    int move(Way way, TestBox& testBox, const std::string& name, bool keepExisting = false,
             const bulkhaul::ProgressFunction& progress = {})
    {
        return move(way, testBox.channel(), name, keepExisting, progress);
    }

    std::unique_ptr<TestCatalogue> catalogue;
    bulkhaul::TransferEnd end; ///< of the last transfer
    std::thread::id endThread;

private:
    fs::path m_Folder;
};

#endif
