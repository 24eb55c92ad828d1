#include "centre/http/SlowClients.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

namespace {

TEST(SlowClients, AreShutDownUnlessTheirRequestHasArrived)
{
    int slow[2];
    int quick[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, slow), 0);
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, quick), 0);
    {
        centre::SlowClients clients(std::chrono::seconds(0));
        centre::SlowClients::Watched& arrived = clients.add(quick[0]);
        centre::SlowClients::arrived(arrived);
        centre::SlowClients::Watched& watched = clients.add(slow[0]);
        char byte = 0;
        EXPECT_EQ(::read(slow[1], &byte, 1), 0); // the end
        EXPECT_EQ(::recv(quick[1], &byte, 1, MSG_DONTWAIT), -1);
        EXPECT_EQ(errno, EAGAIN);
        clients.remove(watched);
        clients.remove(arrived);
    }
    for (const int socket : {slow[0], slow[1], quick[0], quick[1]})
        ::close(socket);
}

} // namespace
