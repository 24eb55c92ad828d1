#include "support/Certificate.h"
#include "tests/cli/CentreProcess.h"

#include <gmock/gmock.h>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

void expectNoConnection(const Outcome& outcome)
{
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_THAT(outcome.errors, testing::StartsWith("lumo: can't reach the centre"));
}

TEST(LumoConnection, PeerThatAcceptsAndSaysNothingEndsWithTheTimeLimit)
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(listen(listener, 1), 0);
    ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
    const std::string centre = "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
    expectNoConnection(run({LUMO_PROGRAM, "--centre", centre, "--timeout", "300ms", "--user", "demo",
                            "--company", "LUMO", "disks"},
                           {"XDG_CONFIG_HOME=/nowhere"}));
    close(listener);
}

TEST(LumoConnection, ServerIsVerifiedAgainstTheAuthorityGiven)
{
    const Certificate certificate;
    const Certificate other;
    ASSERT_TRUE(certificate.made() && other.made());
    CentreProcess centre;
    centre.serve({"--tls-cert", certificate.certificate(), "--tls-key", certificate.key()});
    centre.done("lumo disks --tls-ca " + certificate.certificate());
    for (const std::string& security :
         {"--tls-ca " + other.certificate(), std::string("--tls"), std::string()})
        expectNoConnection(centre.shell("lumo disks " + security));
}

} // namespace
