#ifndef LUMO_CENTRE_IMAGE_CHANNEL_H
#define LUMO_CENTRE_IMAGE_CHANNEL_H

#include "components/bulkhaul/files/Folder.h"

#include <google/protobuf/message_lite.h>

#include <functional>
#include <vector>

namespace centre {

/// Waits until a socket can be read. Returns false to give up.
using WaitReadable = std::function<bool()>;

/// Sends a message, and copies of descriptors with it. Returns false if the other side has gone.
bool sendMessage(int socket, const google::protobuf::MessageLite& message,
                 const std::vector<int>& descriptors = {});

/// Receives a message of at most 16 MiB and the descriptors that come with it, at most two. Returns false if
/// the other side has gone or sent anything else, and when `wait` gives up.
bool receiveMessage(int socket, google::protobuf::MessageLite& message,
                    std::vector<bulkhaul::FileHandle>& descriptors, const WaitReadable& wait);

} // namespace centre

#endif
