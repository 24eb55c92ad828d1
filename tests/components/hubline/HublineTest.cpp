#include "lumo/components/hubline/Hubline.h"

#include "lumo/components/wirecall/RpcChannel.h"
#include "lumo/components/wirecall/RpcController.h"
#include "tests/support/Certificate.h"
#include "tests/support/TestService.h"

#include <boost/weak_ptr.hpp>
#include <gtest/gtest.h>

#include <memory>

namespace {

class Hubline : public ::testing::Test
{
protected:
    ~Hubline() override { hubline::StopHubline(); }

    hubline::Code start(const std::string& address, const std::string& token = TestServer::kToken)
    {
        m_Options.address = address;
        m_Options.token = token;
        m_Options.timeout = 5000;
        return hubline::StartHubline(m_Options, m_Reason);
    }

    TestService m_Service;
    TestServer m_Centre{m_Service, false};
    hubline::Options m_Options;
    std::string m_Reason;
};

std::string addressOfNobody()
{
    TestService service;
    TestServer server(service);
    return server.address();
}

} // namespace

TEST_F(Hubline, AStartThatFailsHasAReason)
{
    EXPECT_EQ(start(m_Centre.address(), "wrong"), hubline::kTokenRefused);
    EXPECT_EQ(m_Reason, m_Centre.address() + ": wrong token");
    const std::string nobody = addressOfNobody();
    EXPECT_EQ(start(nobody), hubline::kNoConnection);
    EXPECT_EQ(m_Reason, nobody + ": no connection: Connection refused");
    EXPECT_EQ(start(nobody, "line\n"), hubline::kTokenRefused);
    EXPECT_EQ(m_Reason, "the token can't be sent: it has blanks, line ends, control characters or characters "
                        "that are not ASCII");
    EXPECT_EQ(start("nonsense"), hubline::kNoConnection);
    EXPECT_EQ(m_Reason, "\"nonsense\" is not an address of the form host:port");
    m_Options.security = hubline::Security::PlainText;
    EXPECT_EQ(start("192.0.2.1:7001"), hubline::kInsecure);
    EXPECT_EQ(m_Reason, "a token may not travel to 192.0.2.1:7001 in plain text: use TLS, or no token");
    EXPECT_FALSE(hubline::GetCurrentChannelExt());
    EXPECT_EQ(start(m_Centre.address()), hubline::kOpened);
    EXPECT_TRUE(hubline::GetCurrentChannelExt());
}

TEST_F(Hubline, AnotherHostGetsTlsUnlessAskedOtherwise)
{
    const Certificate certificate;
    TestServer server(m_Service, false, certificate.certificate(), certificate.key());
    EXPECT_EQ(start(server.address()), hubline::kNoConnection) << "plain text on loopback by default";
    m_Options.security = hubline::Security::Tls;
    EXPECT_EQ(start(server.address()), hubline::kNoConnection) << "the certificate is not the system's";
    m_Options.rootCertificate = certificate.certificate();
    EXPECT_EQ(start(server.address()), hubline::kOpened) << m_Reason;
}

TEST_F(Hubline, ANewChannelHasACode)
{
    int code = -1;
    EXPECT_FALSE(hubline::NewChannel(m_Centre.address(), TestServer::kToken, code));
    EXPECT_EQ(code, hubline::kNotStarted);

    ASSERT_EQ(start(m_Centre.address()), hubline::kOpened) << m_Reason;
    TestServer box(m_Service, false);
    TestServer anyToken(m_Service);
    const std::string longest(7168, 'x');
    const struct
    {
        std::string address;
        std::string token;
        int code;
    } cases[] = {
        {m_Centre.address(), "line\n", hubline::kCurrentConnection},
        {anyToken.address(), longest, hubline::kOpened},
        {anyToken.address(), longest + "x", hubline::kTokenRefused},
        {addressOfNobody(), "line\n", hubline::kTokenRefused},
        {anyToken.address(), "two words", hubline::kTokenRefused},
        {anyToken.address(), std::string("n\0l", 3), hubline::kTokenRefused},
        {anyToken.address(), "\x7F", hubline::kTokenRefused},
        {anyToken.address(), "caf\u00E9", hubline::kTokenRefused},
        {box.address(), TestServer::kToken, hubline::kOpened},
        {box.address(), "wrong", hubline::kTokenRefused},
        {addressOfNobody(), TestServer::kToken, hubline::kNoConnection},
    };
    for (const auto& c : cases) {
        const auto channel = hubline::NewChannel(c.address, c.token, code);
        EXPECT_EQ(code, c.code) << c.address;
        EXPECT_EQ(channel != nullptr, code == hubline::kOpened);
    }
}

TEST_F(Hubline, ChannelsToOneAddressAreCountedByTokenAndReleasedInTheOrderOfTheirOpening)
{
    ASSERT_EQ(start(m_Centre.address()), hubline::kOpened) << m_Reason;
    TestServer box(m_Service);
    int code = -1;
    const auto open = [&](const char* token) { return hubline::NewChannel(box.address(), token, code); };
    const boost::weak_ptr<wirecall::RpcChannel> first = open("one");
    EXPECT_EQ(first.lock(), open("one"));
    const boost::weak_ptr<wirecall::RpcChannel> second = open("two");
    EXPECT_NE(first.lock(), second.lock());
    const struct
    {
        bool firstIsOpen, secondIsOpen;
    } afterEachRelease[] = {{true, true}, {false, true}, {false, false}, {false, false}};
    for (const auto& expected : afterEachRelease) {
        hubline::ReleaseChannel(box.address());
        EXPECT_EQ(!first.expired(), expected.firstIsOpen);
        EXPECT_EQ(!second.expired(), expected.secondIsOpen);
    }
    hubline::ReleaseChannel(m_Centre.address()); // does not close the current connection
    const auto current = hubline::GetCurrentChannelExt();
    ASSERT_TRUE(current);
    wirecall::RpcController controller;
    hubline::HelloRsp response;
    hubline::HubServices_Stub(current.get())
        .hello(&controller, &hubline::HelloReq::default_instance(), &response, nullptr);
    EXPECT_FALSE(controller.Failed()) << controller.ErrorText();
}

TEST(HublineLogger, CallsTheApplicationsFunction)
{
    std::string seen;
    hubline::Logger* logger = hubline::Logger::Instance(true);
    EXPECT_EQ(logger, hubline::Logger::Instance(false));
    logger->toCallback([&](int level, const std::string& text) { seen += std::to_string(level) + text; });
    logger->log(2, "line");
    logger->toCallback(hubline::Logger::Callback());
    logger->log(3, "lost");
    EXPECT_EQ(seen, "2line");
}
