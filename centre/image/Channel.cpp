#include "centre/image/Channel.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace centre {

namespace {

constexpr std::uint32_t kLargestMessage = 16 << 20;
constexpr std::size_t kMostDescriptors = 2;

/// Receives some bytes, at least one, and puts the descriptors that come with them into the list.
std::size_t receiveSome(int socket, char* data, std::size_t size,
                        std::vector<bulkhaul::FileHandle>& descriptors)
{
    alignas(cmsghdr) char control[CMSG_SPACE(kMostDescriptors * sizeof(int))];
    iovec piece = {data, size};
    msghdr header = {};
    header.msg_iov = &piece;
    header.msg_iovlen = 1;
    header.msg_control = control;
    header.msg_controllen = sizeof control;
    ssize_t received = 0;
    do
        received = ::recvmsg(socket, &header, MSG_CMSG_CLOEXEC);
    while (received < 0 && errno == EINTR);
    if (received <= 0)
        return 0;
    for (cmsghdr* each = CMSG_FIRSTHDR(&header); each != nullptr; each = CMSG_NXTHDR(&header, each)) {
        if (each->cmsg_level != SOL_SOCKET || each->cmsg_type != SCM_RIGHTS)
            continue;
        for (std::size_t at = 0; at + sizeof(int) <= each->cmsg_len - CMSG_LEN(0); at += sizeof(int)) {
            int descriptor = -1;
            std::memcpy(&descriptor, CMSG_DATA(each) + at, sizeof descriptor);
            descriptors.emplace_back(descriptor);
        }
    }
    return static_cast<std::size_t>(received);
}

bool receiveAll(int socket, char* data, std::size_t size, std::vector<bulkhaul::FileHandle>& descriptors,
                const WaitReadable& wait)
{
    for (std::size_t done = 0; done < size;) {
        const std::size_t more = wait() ? receiveSome(socket, data + done, size - done, descriptors) : 0;
        if (more == 0)
            return false;
        done += more;
    }
    return true;
}

} // namespace

bool sendMessage(int socket, const google::protobuf::MessageLite& message,
                 const std::vector<int>& descriptors)
{
    const std::uint32_t length = static_cast<std::uint32_t>(message.ByteSizeLong());
    std::string bytes(sizeof length, '\0');
    std::memcpy(bytes.data(), &length, sizeof length);
    message.AppendToString(&bytes);

    alignas(cmsghdr) char control[CMSG_SPACE(kMostDescriptors * sizeof(int))] = {};
    std::size_t attached = descriptors.size() * sizeof(int);
    for (std::size_t done = 0; done < bytes.size();) {
        iovec piece = {bytes.data() + done, bytes.size() - done};
        msghdr header = {};
        header.msg_iov = &piece;
        header.msg_iovlen = 1;
        if (attached > 0) {
            header.msg_control = control;
            header.msg_controllen = CMSG_SPACE(attached);
            cmsghdr* rights = CMSG_FIRSTHDR(&header);
            rights->cmsg_level = SOL_SOCKET;
            rights->cmsg_type = SCM_RIGHTS;
            rights->cmsg_len = CMSG_LEN(attached);
            std::memcpy(CMSG_DATA(rights), descriptors.data(), attached);
        }
        const ssize_t sent = ::sendmsg(socket, &header, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent <= 0)
            return false;
        attached = 0;
        done += static_cast<std::size_t>(sent);
    }
    return true;
}

bool receiveMessage(int socket, google::protobuf::MessageLite& message,
                    std::vector<bulkhaul::FileHandle>& descriptors, const WaitReadable& wait)
{
    std::uint32_t length = 0;
    if (!receiveAll(socket, reinterpret_cast<char*>(&length), sizeof length, descriptors, wait) ||
        length > kLargestMessage)
        return false;
    std::string bytes(length, '\0');
    return receiveAll(socket, bytes.data(), bytes.size(), descriptors, wait) &&
           message.ParseFromString(bytes);
}

} // namespace centre
