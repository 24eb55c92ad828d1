#include "tests/centre/CentreProgram.h"
#include "tests/centre/CentreSupport.h"
#include "tests/support/Certificate.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <future>
#include <thread>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// The socket of a service manager.
class NotifySocket
{
public:
    explicit NotifySocket(const std::string& path) : m_Socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        const timeval limit = {20, 0}; // for a program that ends without a word
        ::setsockopt(m_Socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        EXPECT_EQ(::bind(m_Socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    ~NotifySocket() { ::close(m_Socket); }
    NotifySocket(const NotifySocket&) = delete;
    NotifySocket& operator=(const NotifySocket&) = delete;

    /// Waits for the next state.
    std::string next() const
    {
        char text[256];
        const ssize_t length = ::recv(m_Socket, text, sizeof text, 0);
        return length < 0 ? "nothing" : std::string(text, length);
    }

private:
    const int m_Socket;
};

class Service : public testing::Test
{
protected:
    /// Starts the program as a service manager does, with more arguments, and waits until it is ready.
    void serve(const std::vector<std::string>& arguments)
    {
        std::vector<std::string> command = {"/usr/bin/env", "NOTIFY_SOCKET=" + m_Data.below("notify")};
        for (const std::string& word : centreCommand({"serve", m_Data.path(), "--listen", "127.0.0.1:0"}))
            command.push_back(word);
        command.insert(command.end(), arguments.begin(), arguments.end());
        m_Process = std::make_unique<Process>(command);
        m_Address = servingAddress(*m_Process);
        ASSERT_EQ(m_Manager.next(), "READY=1");
    }

    static std::string askCompany(wirecall::RpcChannel& channel)
    {
        return ask(channel, "queryCompanyTableByCompanyNo", "companyno: 'LUMO'");
    }

    DataFolder m_Data;
    NotifySocket m_Manager{m_Data.below("notify")};
    std::unique_ptr<Process> m_Process;
    std::string m_Address;
};

constexpr char kKnown[] = "result: 0 bean { id: 1 companyno: \"LUMO\" }";

TEST_F(Service, ReloadsItsCertificateWithoutDroppingConnections)
{
    const Certificate first;
    const Certificate second;
    const auto use = [this](const std::string& certificate, const std::string& key) {
        for (const auto& [from, to] : {std::pair(certificate, "certificate"), {key, "key"}})
            std::filesystem::copy_file(from, m_Data.below(to),
                                       std::filesystem::copy_options::overwrite_existing);
    };
    const auto reload = [this] {
        m_Process->signal(SIGHUP);
        EXPECT_THAT(m_Manager.next(), StartsWith("RELOADING=1\nMONOTONIC_USEC="));
        EXPECT_EQ(m_Manager.next(), "READY=1");
    };
    use(first.certificate(), first.key());
    serve({"--tls-cert", m_Data.below("certificate"), "--tls-key", m_Data.below("key")});
    const auto kept = channelTo(m_Address, m_Data.token(), first.certificate());
    EXPECT_EQ(askCompany(*kept), kKnown);

    use(second.certificate(), second.key());
    reload();
    EXPECT_EQ(askCompany(*channelTo(m_Address, m_Data.token(), second.certificate())), kKnown);
    EXPECT_EQ(askCompany(*kept), kKnown);
    EXPECT_THAT(askCompany(*channelTo(m_Address, m_Data.token(), first.certificate())),
                StartsWith("failed: "));

    use(first.certificate(), second.key()); // no pair: what it has stays
    reload();
    EXPECT_EQ(askCompany(*channelTo(m_Address, m_Data.token(), second.certificate())), kKnown);
    m_Process->signal(SIGTERM);
    EXPECT_EQ(m_Manager.next(), "STOPPING=1");
    EXPECT_EQ(m_Process->wait(), 0);
}

TEST_F(Service, EndsInOrderAlthoughACallGoesOn)
{
    serve({"--grace", "0.1", "--fault", "queryUserTableByUserName@1=stall"});
    // Of two calls the first stalls, so when one is answered the other goes on.
    std::promise<std::string> answered;
    std::promise<std::string> failed;
    const auto callOnce = [&] {
        const std::string answer =
            ask(*channelTo(m_Address, m_Data.token()), "queryUserTableByUserName", "username: 'demo'");
        (answer.rfind("failed", 0) == 0 ? failed : answered).set_value(answer);
    };
    std::thread first(callOnce);
    std::thread second(callOnce);
    answered.get_future().wait();
    m_Process->signal(SIGTERM);
    EXPECT_EQ(m_Manager.next(), "STOPPING=1");
    EXPECT_EQ(m_Process->wait(), 0);
    first.join();
    second.join();
    EXPECT_THAT(failed.get_future().get(), HasSubstr("failed: "));
}

TEST_F(Service, SaysWithoutATokenWhetherItIsHealthy)
{
    centre::Store(m_Data.path()).addBox("B1", "127.0.0.1:1");
    serve({"--box", "B1=127.0.0.1:0"});
    const std::string program = TEST_FOLDER "/health_check";
    const auto health = [&program](const std::string& address) {
        return run({program, address, "", "ledgerserver.LedgerServices", "haulbox.BoxServices",
                    "grpc.health.v1.Health"})
            .output;
    };
    const std::string box = m_Address.substr(m_Address.rfind(' ') + 1); // the box's line comes first
    const std::string centre = servingAddress(*m_Process);
    EXPECT_EQ(health(centre), "SERVING\nSERVING\nNOT_FOUND\nSERVING\n");
    EXPECT_EQ(health(box), "SERVING\nNOT_FOUND\nSERVING\nSERVING\n");
    centre::Store(m_Data.path()).database().execute("ALTER TABLE company RENAME TO elsewhere");
    EXPECT_THAT(health(centre), StartsWith("NOT_SERVING\n"));
}

} // namespace
